// Answers the boxes that a module opens, as nobody sits in front of the tests.
#pragma once

#include <memory>

namespace endtoend {

// While one lives, a thread of its own presses OK in every dialog of this process. Without
// windows there is nothing to do.
class DialogCloser {
public:
    DialogCloser();
    ~DialogCloser();
    DialogCloser(const DialogCloser&) = delete;
    DialogCloser& operator=(const DialogCloser&) = delete;

private:
    struct Watch;
    std::unique_ptr<Watch> watch_;
};

// True where opening the filter's own dialog would wait for a person.
constexpr bool kDialogWaits =
#ifdef _WIN32
    true;
#else
    false;
#endif

}  // namespace endtoend
