#pragma once

#include "platform/windows/presenter.h"

namespace tarnel {

/// The presenter, if there is one that can show the calling thread's dialogs now; else null.
std::shared_ptr<Presenter> ready_presenter();

} // namespace tarnel
