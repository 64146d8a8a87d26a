#include "tests/lv2/JackProbe.h"

#include <chrono>
#include <thread>

namespace {

bool waitFor(const auto& condition)
{
    for (int i = 0; i < 100; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

} // namespace

JackProbe::JackProbe(const std::string& server)
{
    waitFor([&] {
        jack_status_t status;
        client = jack_client_open("hvt-probe",
                                  static_cast<jack_options_t>(JackNoStartServer | JackServerName),
                                  &status, server.c_str());
        return client != nullptr;
    });
    if (!client)
        return;
    const char* names[2] = {"l", "r"};
    for (int c = 0; c < 2; ++c) {
        outputs[c] = jack_port_register(client, (std::string("to_") + names[c]).c_str(),
                                        JACK_DEFAULT_AUDIO_TYPE, JackPortIsOutput, 0);
        inputs[c] = jack_port_register(client, (std::string("from_") + names[c]).c_str(),
                                       JACK_DEFAULT_AUDIO_TYPE, JackPortIsInput, 0);
    }
    if (!outputs[0] || !outputs[1] || !inputs[0] || !inputs[1] ||
        jack_set_process_callback(client, process, this) != 0 || jack_activate(client) != 0) {
        jack_client_close(client);
        client = nullptr;
    }
}

JackProbe::~JackProbe()
{
    if (client)
        jack_client_close(client);
}

bool JackProbe::attach(const std::string& plugin)
{
    if (!waitFor([&] { return jack_port_by_name(client, (plugin + ":out_r").c_str()) != nullptr; }))
        return false;
    return jack_connect(client, jack_port_name(outputs[0]), (plugin + ":in_l").c_str()) == 0 &&
           jack_connect(client, jack_port_name(outputs[1]), (plugin + ":in_r").c_str()) == 0 &&
           jack_connect(client, (plugin + ":out_l").c_str(), jack_port_name(inputs[0])) == 0 &&
           jack_connect(client, (plugin + ":out_r").c_str(), jack_port_name(inputs[1])) == 0;
}

JackProbe::Counts JackProbe::take()
{
    return {periods.exchange(0), changed.exchange(0)};
}

int JackProbe::process(jack_nframes_t frames, void* self)
{
    auto* probe = static_cast<JackProbe*>(self);
    bool same = true;
    for (int c = 0; c < 2; ++c) {
        auto* out = static_cast<float*>(jack_port_get_buffer(probe->outputs[c], frames));
        const auto* in = static_cast<const float*>(jack_port_get_buffer(probe->inputs[c], frames));
        for (jack_nframes_t i = 0; i < frames; ++i) {
            out[i] = kLevel;
            same = same && in[i] == kLevel;
        }
    }
    probe->periods.fetch_add(1, std::memory_order_relaxed);
    if (!same)
        probe->changed.fetch_add(1, std::memory_order_relaxed);
    return 0;
}
