// The script descriptor: any stream of keys, types and values, and tables of procedures with holes.
#include <cmath>
#include <memory>
#include <set>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "frame/pfFilterRadialBlur.h"

namespace {

using fuzzing::Require;
using hostapi::FourCharacterCode;

constexpr hostapi::OSType kKeys[] = {FourCharacterCode("ORIX"),
                                     FourCharacterCode("ORIY"),
                                     FourCharacterCode("INTE"),
                                     FourCharacterCode("STRE"),
                                     FourCharacterCode("ZOST"),
                                     FourCharacterCode("HORA"),
                                     FourCharacterCode("MODE"),
                                     FourCharacterCode("INGR"),
                                     FourCharacterCode("GAMA"),
                                     FourCharacterCode("CONT"),
                                     FourCharacterCode("GAMC"),
                                     FourCharacterCode("HSLH"),
                                     FourCharacterCode("HSLS"),
                                     FourCharacterCode("HSLL"),
                                     FourCharacterCode("SELL"),
                                     FourCharacterCode("SELH"),
                                     FourCharacterCode("SELS"),
                                     FourCharacterCode("SELC"),
                                     FourCharacterCode("USES"),
                                     FourCharacterCode("BLND"),
                                     FourCharacterCode("SHOW"),
                                     FourCharacterCode("ZZZZ"),
                                     0,
                                     0xFFFFFFFFu};

// One host for one input. The procedures carry no pointer of ours, so they find it here.
struct Host {
    fuzzing::FuzzInput* input = nullptr;
    int keysGiven = 0;
    int openReaders = 0;
    int openWriters = 0;
    bool endless = false;
    std::set<hostapi::Handle> handles;
};
Host* host = nullptr;
int readToken = 0;
int writeToken = 0;

hostapi::Handle NewHandle(std::int32_t) {
    if (host->input->Rarely(8)) {
        return nullptr;
    }
    const auto handle = static_cast<hostapi::Handle>(std::malloc(sizeof(hostapi::Ptr)));
    *handle = nullptr;
    host->handles.insert(handle);
    return handle;
}

void DisposeHandle(hostapi::Handle handle) {
    Require(host->handles.erase(handle) == 1, "a handle is disposed once, and only by its owner");
    std::free(handle);
}

std::int32_t HandleSize(hostapi::Handle) {
    return 0;
}
hostapi::OSErr SetHandleSize(hostapi::Handle, std::int32_t) {
    return 0;
}

hostapi::PIReadDescriptor OpenRead(hostapi::Handle, hostapi::OSType* keys) {
    int count = 0;
    while (keys[count] != 0) {
        ++count;
    }
    Require(count == 21, "the list of keys is whole and ends in 0");
    if (host->input->Rarely(16)) {
        return nullptr;
    }
    ++host->openReaders;
    return &readToken;
}

hostapi::OSErr CloseRead(hostapi::PIReadDescriptor token) {
    Require(token == &readToken, "the token closed is the one that was opened");
    --host->openReaders;
    return host->input->Rarely(4) ? hostapi::OSErr{-1715} : hostapi::OSErr{0};
}

hostapi::Boolean GetKey(hostapi::PIReadDescriptor, hostapi::OSType* key, hostapi::OSType* type,
                        std::int32_t* flags) {
    ++host->keysGiven;
    if (host->input->Left() == 0 && !host->endless) {
        return 0;
    }
    const int which = host->input->Below(32);
    *key = which < 24 ? kKeys[which] : host->input->Raw<hostapi::OSType>();
    *type = host->input->Flag() ? FourCharacterCode("doub") : host->input->Raw<hostapi::OSType>();
    *flags = host->input->Byte();
    return static_cast<hostapi::Boolean>(1 + host->input->Below(255));
}

// Any answer: an error with or without a value, success with or without one.
hostapi::OSErr Answer(bool& store) {
    const int kind = host->input->Below(16);
    store = kind != 1 && kind != 2;
    return kind == 2 || kind == 3 ? hostapi::OSErr{-1712} : hostapi::OSErr{0};
}

hostapi::OSErr GetInteger(hostapi::PIReadDescriptor, std::int32_t* value) {
    bool store = false;
    const hostapi::OSErr error = Answer(store);
    if (store) {
        *value = host->input->Flag() ? host->input->Raw<std::int32_t>() : host->input->Below(30);
    }
    return error;
}
hostapi::OSErr GetFloat(hostapi::PIReadDescriptor, double* value) {
    bool store = false;
    const hostapi::OSErr error = Answer(store);
    if (store) {
        *value = host->input->Number();
    }
    return error;
}
hostapi::OSErr GetBoolean(hostapi::PIReadDescriptor, hostapi::Boolean* value) {
    bool store = false;
    const hostapi::OSErr error = Answer(store);
    if (store) {
        *value = host->input->Byte();
    }
    return error;
}

hostapi::PIWriteDescriptor OpenWrite() {
    if (host->input->Rarely(16)) {
        return nullptr;
    }
    ++host->openWriters;
    return &writeToken;
}
hostapi::OSErr CloseWrite(hostapi::PIWriteDescriptor token, hostapi::Handle* handle) {
    Require(token == &writeToken, "the token closed is the one that was opened");
    --host->openWriters;
    if (host->input->Rarely(8)) {
        return -108;
    }
    *handle = NewHandle(0);
    return 0;
}
hostapi::OSErr Put() {
    return host->input->Rarely(8) ? hostapi::OSErr{-108} : hostapi::OSErr{0};
}
hostapi::OSErr PutInteger(hostapi::PIWriteDescriptor, hostapi::OSType, std::int32_t) {
    return Put();
}
hostapi::OSErr PutFloat(hostapi::PIWriteDescriptor, hostapi::OSType, const double* value) {
    Require(!std::isnan(*value), "no value is no number");
    return Put();
}
hostapi::OSErr PutBoolean(hostapi::PIWriteDescriptor, hostapi::OSType, hostapi::Boolean value) {
    Require(value <= 1, "a truth value is 0 or 1");
    return Put();
}

// All procedures there, but for those that the input takes away.
class Tables {
public:
    explicit Tables(fuzzing::FuzzInput& input) {
        const auto filler = reinterpret_cast<void (*)()>(SetHandleSize);
        Fill(&reads_.openReadDescriptorProc, 18, filler);
        Fill(&writes_.openWriteDescriptorProc, 16, filler);
        reads_.numReadDescriptorProcs = 18;
        reads_.openReadDescriptorProc = OpenRead;
        reads_.closeReadDescriptorProc = CloseRead;
        reads_.getKeyProc = GetKey;
        reads_.getIntegerProc = GetInteger;
        reads_.getFloatProc = GetFloat;
        reads_.getBooleanProc = GetBoolean;
        writes_.numWriteDescriptorProcs = 16;
        writes_.openWriteDescriptorProc = OpenWrite;
        writes_.closeWriteDescriptorProc = CloseWrite;
        writes_.putIntegerProc = PutInteger;
        writes_.putFloatProc = PutFloat;
        writes_.putBooleanProc = PutBoolean;
        handles_ = {1,       8,       NewHandle, DisposeHandle, HandleSize, SetHandleSize,
                    nullptr, nullptr, nullptr,   DisposeHandle};
        if (input.Flag()) {
            Break(input);
        }
        block_.playInfo = input.Rarely(3) ? input.Raw<std::int16_t>() : std::int16_t{2};
        block_.readDescriptorProcs = input.Rarely(32) ? nullptr : &reads_;
        block_.writeDescriptorProcs = input.Rarely(32) ? nullptr : &writes_;
        record_.descriptorParameters = input.Rarely(32) ? nullptr : &block_;
        record_.handleProcs = input.Rarely(16) ? nullptr : &handles_;
        block_.descriptor = input.Rarely(8) ? nullptr : NewHandle(0);
    }

    hostapi::FilterRecord& Record() { return record_; }

    // Without usable handle procedures the module frees handles as the system does.
    bool ModuleDisposes() const {
        return record_.handleProcs != nullptr && handles_.handleProcsVersion == 1 &&
               handles_.numHandleProcs >= 8 && handles_.newProc != nullptr &&
               handles_.disposeProc != nullptr && handles_.getSizeProc != nullptr &&
               handles_.setSizeProc != nullptr;
    }
    hostapi::Handle Descriptor() const { return block_.descriptor; }

private:
    template <class Slot>
    static void Fill(Slot* first, int count, void (*filler)()) {
        auto* slots = reinterpret_cast<void (**)()>(first);
        for (int i = 0; i < count; ++i) {
            slots[i] = filler;
        }
    }

    void Break(fuzzing::FuzzInput& input) {
        switch (input.Below(6)) {
            case 0:
                reinterpret_cast<void (**)()>(&reads_.openReadDescriptorProc)[input.Below(18)] =
                    nullptr;
                break;
            case 1:
                reinterpret_cast<void (**)()>(&writes_.openWriteDescriptorProc)[input.Below(16)] =
                    nullptr;
                break;
            case 2:
                reads_.numReadDescriptorProcs = input.Raw<std::int16_t>();
                break;
            case 3:
                writes_.numWriteDescriptorProcs = input.Raw<std::int16_t>();
                break;
            case 4:
                block_.descriptorParametersVersion = input.Raw<std::int16_t>();
                break;
            default:
                handles_.numHandleProcs = input.Raw<std::int16_t>();
                break;
        }
    }

    hostapi::ReadDescriptorProcs reads_{};
    hostapi::WriteDescriptorProcs writes_{};
    hostapi::HandleProcs handles_{};
    hostapi::PIDescriptorParameters block_{};
    hostapi::FilterRecord record_{};
};

void CheckValues(const mv::pfFilterRadialBlur& filter) {
    const mv::RenderSettings settings = filter.MakeRenderSettings(64, 48);
    Require(settings.mode >= 1 && settings.mode <= 2 && settings.blend >= 1 &&
                settings.blend <= 23 && settings.show >= 1 && settings.show <= 4,
            "lists stand on one of their entries");
    Require(settings.intensity >= 0.0 && settings.strength >= 0.0 && settings.contrast >= 0.0 &&
                settings.hue >= -1.0 && settings.hue <= 1.0 && settings.lightness >= -1.0 &&
                settings.lightness <= 1.0 && settings.selectionSoften >= 0.0 &&
                settings.selectionSoften <= 3.0,
            "hard bounds hold after validation");
    Require(std::isfinite(settings.centerX) && std::isfinite(settings.centerY),
            "the centre that is rendered with is a number");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static mv::pfFilterRadialBlur filter("fuzz", "fuzz", 1, 2, 6, "fuzz");
    filter.Reset(false);
    fuzzing::FuzzInput input(data, size);
    Host now;
    now.input = &input;
    host = &now;
    // One input alone: a stream without an end takes as long as a thousand others.
    now.endless = size == 2 && data[0] == 0xEE && data[1] == 0xEE;
    static_cast<void>(input.Raw<std::uint16_t>());
    Tables tables(input);
    filter.GetParameters().ReadScriptParams(&tables.Record());
    filter.GetParameters().WriteScriptParams(&tables.Record());
    filter.GetParameters().ValidateAll();
    CheckValues(filter);
    Require(now.openReaders == 0 && now.openWriters == 0, "every token is closed");
    Require(now.keysGiven <= 65537, "a stream without an end is left");
    if (tables.ModuleDisposes()) {
        Require(now.handles.size() <= 1, "the played descriptor is disposed");
        for (const hostapi::Handle handle : now.handles) {
            Require(handle == tables.Descriptor(), "what is left is the recorded descriptor");
            std::free(handle);
        }
    } else if (tables.Descriptor() != nullptr) {
        std::free(tables.Descriptor());
    }
    host = nullptr;
    return 0;
}

std::vector<std::string> fuzzing::Seeds() {
    std::vector<std::string> seeds;
    // No break, play silently, everything there; then keys in order with values of each kind.
    for (const char kind : {'\x00', '\x04', '\x06', '\x07'}) {
        std::string seed(10, '\x00');
        for (char key = 0; key < 24; ++key) {
            seed += key;
            seed += std::string("\x01\x00\x05\x00", 4);
            seed += kind;
            seed += std::string("\x00\x18\x01\x02", 4);
        }
        seeds.push_back(seed);
    }
    seeds.push_back("\xEE\xEE");
    for (char broken = 0; broken < 6; ++broken) {
        std::string seed("\x00\x00\x01", 3);
        seed += broken;
        seed += std::string("\x02\x00\x00\x00\x00\x00\x00", 7);
        seeds.push_back(seed + seeds.front().substr(10));
    }
    return seeds;
}
