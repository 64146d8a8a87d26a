// A JACK client of the test's own on a private server: it feeds a constant signal to a plug-in's
// inputs and counts the periods in which the plug-in changed it, which tells from outside whether
// a stage of the effect runs.
#pragma once

#include <jack/jack.h>

#include <atomic>
#include <string>

class JackProbe {
public:
    static constexpr float kLevel = 0.5f; // every input sample

    // Connects to the server of that name, waiting up to ten seconds for it to come up.
    explicit JackProbe(const std::string& server);
    ~JackProbe();
    JackProbe(const JackProbe&) = delete;
    JackProbe& operator=(const JackProbe&) = delete;

    bool ok() const { return client != nullptr; }
    // Feeds client:in_l/in_r and listens to client:out_l/out_r, waiting up to ten seconds for
    // the client's ports to appear.
    bool attach(const std::string& plugin);

    struct Counts {
        int periods = 0;
        int changed = 0; // some output sample differs from its input
    };
    // Since the last call.
    Counts take();

private:
    static int process(jack_nframes_t frames, void* self);

    jack_client_t* client = nullptr;
    jack_port_t* outputs[2] = {};
    jack_port_t* inputs[2] = {};
    std::atomic<int> periods{0};
    std::atomic<int> changed{0};
};
