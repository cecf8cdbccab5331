#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "support/DialogRun.h"
#include "support/DialogUser.h"
#include "support/Registry.h"

namespace mv::windowstest {

// Whether run_under_wine.sh has started a window manager. That places and frames windows as it
// likes, and made-up input does not reach its frames.
inline bool HasWindowManager() {
    return std::getenv("MANAGER") != nullptr;
}

// Every test begins like a user's first day: nothing is stored, and the module is loaded anew.
class DialogTest : public testing::Test {
protected:
    void SetUp() override {
        DeleteSettings();
        DialogRun::UnloadModule();
    }

    void TearDown() override {
        user.reset();
        run.reset();
        DialogRun::UnloadModule();
    }

    // A document that is not opened yet, so that the session can be changed.
    void Prepare(host::HostDocument document) {
        user.reset();
        run = std::make_unique<DialogRun>(std::move(document));
    }

    void Open() {
        ASSERT_TRUE(run->Start());
        user = std::make_unique<DialogUser>(*run);
        user->Settle();
    }

    void Open(int width, int height) {
        Prepare(ColorDocument(width, height));
        Open();
    }

    // What the module wrote into the script descriptor when the run ended.
    template <class Value>
    Value Recorded(const char (&key)[5]) {
        const auto& recorded = run->Session().Recorded();
        if (!recorded) {
            ADD_FAILURE() << "nothing was recorded";
            return Value{};
        }
        const host::ScriptValue* value =
            host::FindValue(*recorded, hostapi::FourCharacterCode(key));
        if (value == nullptr || !std::holds_alternative<Value>(*value)) {
            ADD_FAILURE() << "no value of this kind under " << key;
            return Value{};
        }
        return std::get<Value>(*value);
    }
    double Number(const char (&key)[5]) { return Recorded<double>(key); }

    std::unique_ptr<DialogRun> run;
    std::unique_ptr<DialogUser> user;
};

}  // namespace mv::windowstest
