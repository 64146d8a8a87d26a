#include "lv2/ui/PortParameters.h"

#include "common/truncate.h"
#include "engine/FactoryPrograms.h"
#include "lv2/Ports.h"

using namespace lv2_ports;

namespace {

// The float protocol: one float a write, protocol number 0.
constexpr uint32_t kFloatProtocol = 0;

} // namespace

void PortParameters::Echoes::wrote(float value)
{
    if (count == kCapacity) {
        for (size_t i = 1; i < kCapacity; ++i)
            values[i - 1] = values[i];
        --count;
    }
    values[count++] = value;
}

bool PortParameters::Echoes::take(float value)
{
    for (size_t i = 0; i < count; ++i) {
        if (values[i] == value) {
            for (size_t j = i + 1; j < count; ++j)
                values[j - i - 1] = values[j];
            count -= i + 1;
            return true;
        }
    }
    count = 0;
    return false;
}

// Until the host reports them, the ports hold their defaults: program 0 and "Session rate".
PortParameters::PortParameters(LV2UI_Write_Function write, LV2UI_Controller controller,
                               const LV2UI_Touch* touch)
    : writeFunction(write), controller(controller), touch(touch)
{
    for (int32_t parameter = 0; parameter < kNumParameters; ++parameter)
        values[parameter] = factoryValue(0, parameter);
    values[kSampleRate] = kSessionRate;
}

float PortParameters::shownRate() const
{
    const int32_t chosen = truncateToInt32(values[kSampleRate]);
    return isRateChoice(chosen) ? static_cast<float>(chosen) : tuning;
}

float PortParameters::sampleRate()
{
    if (hostSampleRate > 0.0f)
        return hostSampleRate;
    const int32_t rate = truncateToInt32(shownRate());
    return kRateChoiceHz[isRateChoice(rate) ? rate - kFirstRateChoice : 0];
}

float PortParameters::getParameter(int32_t index)
{
    if (index == kSampleRate)
        return shownRate();
    return isParameter(index) ? values[index] : 0.0f;
}

void PortParameters::write(uint32_t port, float value)
{
    const int32_t parameter = parameterOfPort(port);
    values[parameter] = value;
    echoes[parameter].wrote(value);
    if (writeFunction)
        writeFunction(controller, port, sizeof value, kFloatProtocol, &value);
}

// The panel writes every knob on each step of a drag; only the ports whose value changes are
// written, so that the host records what moved.
void PortParameters::setParameter(int32_t index, float value)
{
    if (index == kSampleRate) {
        const int32_t pressed = truncateToInt32(value);
        const bool again = pressed == truncateToInt32(values[kSampleRate]);
        write(kRateChoicePort, again ? static_cast<float>(kSessionRate) : value);
        rateRedisplay = true;
    } else if (isParameter(index) && !(value == values[index])) {
        write(portOfParameter(index), value);
    }
}

void PortParameters::beginGesture(int32_t index)
{
    if (touch && isParameter(index))
        touch->touch(touch->handle, portOfParameter(index), true);
}

void PortParameters::endGesture(int32_t index)
{
    if (touch && isParameter(index))
        touch->touch(touch->handle, portOfParameter(index), false);
}

int32_t PortParameters::portEvent(uint32_t port, float value)
{
    if (port == kTuningPort) {
        const float before = shownRate();
        tuning = value;
        return shownRate() == before ? -1 : kSampleRate;
    }
    const int32_t parameter = parameterOfPort(port);
    if (parameter < 0 || echoes[parameter].take(value))
        return -1;
    if (parameter != kSampleRate) {
        // A value sent again must not move the knob: one built from 0.57 shows step 56, while
        // a change to 0.57 shows 57 (see panel/KnobArithmetic.h).
        if (value == values[parameter])
            return -1;
        values[parameter] = value;
        return parameter;
    }
    const float before = shownRate();
    values[kSampleRate] = value;
    return shownRate() == before ? -1 : kSampleRate;
}

bool PortParameters::takeRateRedisplay()
{
    const bool redisplay = rateRedisplay;
    rateRedisplay = false;
    return redisplay;
}
