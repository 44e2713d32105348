#include "platform/companions/locale_manager_base.h"

lmLocaleManagerBase::lmLocaleManagerBase() = default;

lmLocaleManagerBase::~lmLocaleManagerBase() = default;

void lmLocaleManagerBase::attach(HINSTANCE module) {
    attached_module_ = module;
}

void lmLocaleManagerBase::detach() {
    attached_module_ = nullptr;
}
