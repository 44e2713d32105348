#include "platform/windows/cmd_ui.h"

CCmdUI::~CCmdUI() = default;

void CCmdUI::Enable(BOOL) {}
