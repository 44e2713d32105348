#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

/// How a command is to be shown in the application's menus and tool bars, while it is being asked
/// about. The application derives from it to show it.
class TARNEL_PLATFORM_API CCmdUI {
  public:
    virtual ~CCmdUI();

    /// Whether the command can be chosen.
    virtual void Enable(BOOL on = TRUE);
};
