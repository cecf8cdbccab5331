#pragma once

#include <cstdint>
#include <list>
#include <string>

namespace mv {

class xParameterBase;

// Parameter list of a host-independent plug-in. Empty in this program, whose parameters live in
// pfParameters.
class xParameterList : public std::list<xParameterBase*> {
public:
    virtual ~xParameterList() = default;
};

// Root of the plug-in: its identity. Built and read on the host's thread.
class MorvenhalePlugin {
public:
    MorvenhalePlugin(std::string name, std::string maker, std::uint32_t versionMajor,
                     std::uint32_t versionMinor, std::uint32_t versionPatch,
                     std::string description);
    virtual ~MorvenhalePlugin() = default;

    MorvenhalePlugin(const MorvenhalePlugin&) = delete;
    MorvenhalePlugin& operator=(const MorvenhalePlugin&) = delete;

    virtual xParameterList* GetParameterList() { return &parameterList_; }

    // Neutral hooks of a host-independent plug-in; the slots are kept, nothing calls them.
    virtual void Hook1() {}
    virtual void Hook2(std::string) {}
    virtual void Hook3(std::uint32_t, std::string) {}
    virtual void Hook4(std::string) {}
    virtual bool Hook5() { return false; }
    virtual bool Hook6() { return false; }
    virtual bool Hook7() { return false; }

    const std::string& GetName() const { return name_; }
    const std::string& GetMaker() const { return maker_; }
    const std::string& GetDescription() const { return description_; }
    std::uint32_t GetVersionMajor() const { return versionMajor_; }
    std::uint32_t GetVersionMinor() const { return versionMinor_; }
    std::uint32_t GetVersionPatch() const { return versionPatch_; }

private:
    std::string name_;
    std::string maker_;
    std::string thirdString_;
    std::uint32_t versionMajor_;
    std::uint32_t versionMinor_;
    std::uint32_t versionPatch_;
    std::string description_;
    xParameterList parameterList_;
};

}  // namespace mv
