// The host side of the VST 2.4 boundary, shared by our command-line tools and the tests: load a
// module with dlopen, create an effect through VSTPluginMain and talk to it only through the
// AEffect record, as any host does.
#pragma once

#include <memory>
#include <string>

#include "host/vst2.h"

class VstModule {
public:
    // Loads the module; on failure error() says why and entry() is null.
    explicit VstModule(const std::string& path);
    ~VstModule();

    VstModule(const VstModule&) = delete;
    VstModule& operator=(const VstModule&) = delete;

    using Entry = AEffect* (*)(audioMasterCallback);
    Entry entry() const { return entryPoint; }
    const std::string& error() const { return errorText; }

private:
    void* handle = nullptr;
    Entry entryPoint = nullptr;
    std::string errorText;
};

// One live effect. Closes it (effClose) when destroyed.
class VstPlugin {
public:
    // Null when the entry returns null.
    static std::unique_ptr<VstPlugin> create(const VstModule& module,
                                             audioMasterCallback callback = defaultCallback);
    ~VstPlugin();

    VstPlugin(const VstPlugin&) = delete;
    VstPlugin& operator=(const VstPlugin&) = delete;

    AEffect* effect() const { return record; }
    VstIntPtr dispatch(VstInt32 opcode, VstInt32 index = 0, VstIntPtr value = 0,
                       void* ptr = nullptr, float opt = 0.0f) const;
    void setParameter(VstInt32 index, float value) const;
    float getParameter(VstInt32 index) const;
    void processReplacing(float** inputs, float** outputs, VstInt32 frames) const;

    // Convenience wrappers for the text queries; each returns what the effect wrote.
    std::string parameterName(VstInt32 index) const;
    std::string parameterLabel(VstInt32 index) const;
    std::string parameterDisplay(VstInt32 index) const;
    std::string programName() const;
    std::string programNameIndexed(VstInt32 index) const;
    std::string effectName() const;

    // Forgets the record without closing it; for tests that close it themselves.
    AEffect* release();

    // Answers audioMasterVersion with 2400 and everything else with 0.
    static VstIntPtr defaultCallback(AEffect* effect, VstInt32 opcode, VstInt32 index,
                                     VstIntPtr value, void* ptr, float opt);

private:
    explicit VstPlugin(AEffect* record) : record(record) {}
    std::string queryText(VstInt32 opcode, VstInt32 index) const;

    AEffect* record;
};
