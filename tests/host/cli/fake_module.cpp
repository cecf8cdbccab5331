// A filter module for tests of the host: it does something simple and exact, and on request it
// misbehaves. The environment variable FAKE_MODULE says what, as words separated by blanks:
//   (nothing)     inverts the colours, not alpha, where the mask is 128 or more
//   copy          gives back what came in
//   showmask      stores the mask in every colour plane (8 bit)
//   tiles         works in rows through the continue selector
//   topleft       requests and writes the top left quarter only
//   automask      leaves the masking to the host
//   slow          takes 10 seconds and asks for aborts on the way
//   sleepless     answers a request to abort only with success
//   leak          keeps a block of the Buffer suite
//   overrun       writes behind a row of the output
//   noresult      stores no result
//   status=N      answers N to the start selector; prepare=N, finish=N likewise
//   text=T        puts T into the host's error string
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "hostapi/HostApi.h"

#ifdef _WIN32
#define FAKE_EXPORT extern "C" __declspec(dllexport)
#else
#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

using hostapi::FilterRecord;
using hostapi::OSErr;
using hostapi::OSType;

// The value behind a word, or null when the word was not given.
const std::string* Asked(const std::string& word) {
    static std::string value;
    const char* const text = std::getenv("FAKE_MODULE");
    std::istringstream words(text != nullptr ? text : "");
    std::string given;
    while (words >> given) {
        const std::size_t equals = given.find('=');
        if (given.substr(0, equals) == word) {
            value = equals == std::string::npos ? "" : given.substr(equals + 1);
            return &value;
        }
    }
    return nullptr;
}

OSErr AskedStatus(const char* word) {
    const std::string* const value = Asked(word);
    return value != nullptr ? static_cast<OSErr>(std::atoi(value->c_str())) : hostapi::noErr;
}

struct Value {
    OSType key;
    OSType type;
    std::int32_t whole;
    double real;
    hostapi::Boolean flag;
};

std::vector<Value> ReadValues(hostapi::PIDescriptorParameters& block) {
    std::vector<Value> values;
    hostapi::ReadDescriptorProcs& procs = *block.readDescriptorProcs;
    OSType keys[] = {hostapi::FourCharacterCode("STRE"), 0};
    void* const token = procs.openReadDescriptorProc(block.descriptor, keys);
    if (token == nullptr) {
        return values;
    }
    Value value{};
    std::int32_t flags = 0;
    while (procs.getKeyProc(token, &value.key, &value.type, &flags) != 0) {
        if (value.type == hostapi::typeFloat) {
            procs.getFloatProc(token, &value.real);
        } else if (value.type == hostapi::typeInteger) {
            procs.getIntegerProc(token, &value.whole);
        } else if (value.type == hostapi::typeBoolean) {
            procs.getBooleanProc(token, &value.flag);
        }
        values.push_back(value);
    }
    procs.closeReadDescriptorProc(token);
    return values;
}

void WriteValues(hostapi::PIDescriptorParameters& block, const std::vector<Value>& values) {
    hostapi::WriteDescriptorProcs& procs = *block.writeDescriptorProcs;
    void* const token = procs.openWriteDescriptorProc();
    for (const Value& value : values) {
        if (value.type == hostapi::typeFloat) {
            procs.putFloatProc(token, value.key, &value.real);
        } else if (value.type == hostapi::typeInteger) {
            procs.putIntegerProc(token, value.key, value.whole);
        } else if (value.type == hostapi::typeBoolean) {
            procs.putBooleanProc(token, value.key, value.flag);
        }
    }
    procs.closeWriteDescriptorProc(token, &block.descriptor);
}

// The values that came in are the ones that were used.
void PassValues(FilterRecord& record) {
    hostapi::PIDescriptorParameters& block = *record.descriptorParameters;
    const std::vector<Value> values = ReadValues(block);
    record.handleProcs->disposeProc(block.descriptor);
    block.descriptor = nullptr;
    WriteValues(block, values);
}

OSErr Request(FilterRecord& record, std::int16_t top, std::int16_t bottom, std::int16_t right) {
    record.inRect = record.outRect = {top, 0, bottom, right};
    record.inLoPlane = record.outLoPlane = 0;
    record.inHiPlane = record.outHiPlane = static_cast<std::int16_t>(record.planes - 1);
    record.inputRate = record.maskRate = 0x00010000;
    if (record.haveMask != 0) {
        record.maskRect = record.inRect;
        if (Asked("automask") == nullptr) {
            record.autoMask = 0;
        }
    }
    return record.advanceState();
}

template <class Sample>
void FilterRow(const FilterRecord& record, int y, Sample white) {
    const auto at = [y](void* data, std::int32_t rowBytes) {
        return static_cast<char*>(data) + static_cast<std::ptrdiff_t>(y) * rowBytes;
    };
    const auto* in = reinterpret_cast<const Sample*>(at(record.inData, record.inRowBytes));
    auto* out = reinterpret_cast<Sample*>(at(record.outData, record.outRowBytes));
    const auto* mask =
        record.maskData != nullptr
            ? reinterpret_cast<const std::uint8_t*>(at(record.maskData, record.maskRowBytes))
            : nullptr;
    const int colours = record.planes - record.inTransparencyMask;
    const bool copies = Asked("copy") != nullptr;
    const bool shows = Asked("showmask") != nullptr;
    const bool everywhere = mask == nullptr || Asked("automask") != nullptr;
    for (int x = 0; x < record.outRect.right; ++x, in += record.planes, out += record.planes) {
        const bool selected = everywhere || mask[x] >= 128;
        for (int plane = 0; plane < record.planes; ++plane) {
            out[plane] = !copies && selected && plane < colours
                             ? static_cast<Sample>(white - in[plane])
                             : in[plane];
            if (shows && plane < colours) {
                out[plane] = static_cast<Sample>(mask == nullptr ? 255 : mask[x]);
            }
        }
    }
}

OSErr FilterRows(FilterRecord& record) {
    const int rows = record.outRect.bottom - record.outRect.top;
    for (int y = 0; y < rows; ++y) {
        if (record.depth == 16) {
            FilterRow<std::uint16_t>(record, y, 32768);
        } else if (record.depth == 32) {
            FilterRow<float>(record, y, 1.0F);
        } else {
            FilterRow<std::uint8_t>(record, y, 255);
        }
        record.progressProc(y, rows);
        if (record.abortProc() != 0) {
            return hostapi::userCanceledErr;
        }
    }
    if (Asked("overrun") != nullptr) {
        static_cast<char*>(record.outData)[record.outRowBytes * rows] = 1;
    }
    record.progressProc(rows, rows);
    return hostapi::noErr;
}

OSErr WorkSlowly(FilterRecord& record) {
    const bool deaf = Asked("sleepless") != nullptr;
    for (int step = 0; step < 1000; ++step) {
        record.progressProc(step, 1000);
        if (record.abortProc() != 0) {
            return deaf ? hostapi::noErr : hostapi::userCanceledErr;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return hostapi::noErr;
}

void Leak(FilterRecord& record) {
    const void* suite = nullptr;
    record.sSPBasic->AcquireSuite(hostapi::kPSBufferSuite, hostapi::kPSBufferSuiteVersion1, &suite);
    std::uint64_t size = 1000;
    static_cast<const hostapi::PSBufferSuite1*>(suite)->New(reinterpret_cast<std::uint32_t*>(&size),
                                                            1000);
    record.sSPBasic->ReleaseSuite(hostapi::kPSBufferSuite, hostapi::kPSBufferSuiteVersion1);
}

void SetErrorString(FilterRecord& record, const std::string& text) {
    hostapi::Str255& target = *record.errorString;
    target[0] = static_cast<std::uint8_t>(text.size());
    std::memcpy(target + 1, text.data(), text.size());
}

void Finish(FilterRecord& record) {
    record.inRect = record.outRect = record.maskRect = {};
}

OSErr Start(FilterRecord& record) {
    PassValues(record);
    if (const std::string* const text = Asked("text"); text != nullptr) {
        SetErrorString(record, *text);
    }
    if (const OSErr status = AskedStatus("status"); status != hostapi::noErr) {
        return status;
    }
    if (Asked("leak") != nullptr) {
        Leak(record);
    }
    if (Asked("slow") != nullptr) {
        if (const OSErr status = WorkSlowly(record); status != hostapi::noErr) {
            return status;
        }
    }
    if (Asked("tiles") != nullptr) {
        record.inRect = record.outRect = {0, 0, 1, record.imageSize.h};
        record.inLoPlane = record.outLoPlane = 0;
        record.inHiPlane = record.outHiPlane = static_cast<std::int16_t>(record.planes - 1);
        return hostapi::noErr;
    }
    const bool part = Asked("topleft") != nullptr;
    const std::int16_t bottom =
        part ? static_cast<std::int16_t>(record.imageSize.v / 2) : record.imageSize.v;
    const std::int16_t right =
        part ? static_cast<std::int16_t>(record.imageSize.h / 2) : record.imageSize.h;
    OSErr status = Request(record, 0, bottom, right);
    if (status == hostapi::noErr) {
        status = FilterRows(record);
    }
    Finish(record);
    return status;
}

OSErr Continue(FilterRecord& record) {
    const OSErr status = FilterRows(record);
    const auto next = static_cast<std::int16_t>(record.outRect.bottom);
    if (status != hostapi::noErr || next >= record.imageSize.v) {
        Finish(record);
    } else {
        record.inRect =
            record.outRect = {next, 0, static_cast<std::int16_t>(next + 1), record.imageSize.h};
    }
    return status;
}

OSErr Dispatch(std::int16_t selector, FilterRecord& record) {
    switch (selector) {
        case hostapi::filterSelectorPrepare:
            return AskedStatus("prepare");
        case hostapi::filterSelectorStart:
            return Start(record);
        case hostapi::filterSelectorContinue:
            return Continue(record);
        case hostapi::filterSelectorFinish:
            return AskedStatus("finish");
        default:
            return hostapi::noErr;
    }
}

}  // namespace

FAKE_EXPORT void ENTRYPOINT(std::int16_t selector, void* block, std::intptr_t*,
                            std::int16_t* result) {
    const OSErr status = selector == hostapi::filterSelectorAbout
                             ? hostapi::noErr
                             : Dispatch(selector, *static_cast<FilterRecord*>(block));
    if (Asked("noresult") == nullptr) {
        *result = status;
    }
}
