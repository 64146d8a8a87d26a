#include "tools/vsthost/HostCallLog.h"

#include <mutex>
#include <utility>

#include "tools/vsthost/VstPlugin.h"

namespace {

std::mutex guard;
std::vector<HostCall> calls;
HostCallLog::AutomateHandler automateHandler;

} // namespace

VstIntPtr HostCallLog::callback(AEffect* effect, VstInt32 opcode, VstInt32 index, VstIntPtr value,
                                void* ptr, float opt)
{
    AutomateHandler handler;
    {
        const std::lock_guard<std::mutex> lock(guard);
        calls.push_back({opcode, index, opt, std::this_thread::get_id()});
        if (opcode == audioMasterAutomate)
            handler = automateHandler;
    }
    // Outside the lock: the handler may call into the effect, which may call back.
    if (handler)
        handler(effect, index, opt);
    return VstPlugin::defaultCallback(effect, opcode, index, value, ptr, opt);
}

std::vector<HostCall> HostCallLog::take()
{
    const std::lock_guard<std::mutex> lock(guard);
    return std::exchange(calls, {});
}

void HostCallLog::onAutomate(AutomateHandler handler)
{
    const std::lock_guard<std::mutex> lock(guard);
    automateHandler = std::move(handler);
}
