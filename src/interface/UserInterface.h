// What the frame asks of the user interface. One body for Windows, one for systems without it.
#pragma once

#include <memory>

#include "hostapi/HostApi.h"

namespace mv {

class pfParameterUI;
class pfPreview;

// The makers throw std::bad_alloc when memory is out; they run in the filter's constructor only.
std::unique_ptr<pfPreview> CreatePreview();
std::unique_ptr<pfParameterUI> CreatePositionControl(int editIdX, int editIdY);
std::unique_ptr<pfParameterUI> CreateFloatControl(int editId, int sliderId);
std::unique_ptr<pfParameterUI> CreateBoolControl(int checkId);
std::unique_ptr<pfParameterUI> CreateListControl(int listId);

// Shows the about box with the zero-terminated text, modally.
void ShowAbout(const char* text) noexcept;

// A modal error box, owned by the host's window where the record names one.
void ShowErrorBox(const hostapi::FilterRecord* filterRecord, const char* caption,
                  const char* text) noexcept;

enum class DrainResult { Done, Quit };

// Serves every message that waits for the calling thread. Quit: a quit message was found, and
// has been put back for the host or the dialog.
DrainResult DrainMessages() noexcept;

}  // namespace mv
