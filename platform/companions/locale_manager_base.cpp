#include "platform/companions/locale_manager_base.h"

#include "platform/base/never_destroyed.h"
#include "platform/companions/resource_finder.h"
#include "platform/modules/module.h"

#include <mutex>
#include <vector>

namespace {

/// The managers that are attached. The lock is not held while one of them is called.
class AttachedManagers {
  public:
    void add(lmLocaleManagerBase* manager) {
        const std::scoped_lock lock(managers_lock_);
        managers_.push_back(manager);
    }

    void remove(lmLocaleManagerBase* manager) {
        const std::scoped_lock lock(managers_lock_);
        std::erase(managers_, manager);
    }

    std::vector<lmLocaleManagerBase*> all() {
        const std::scoped_lock lock(managers_lock_);
        return managers_;
    }

  private:
    std::mutex managers_lock_;
    std::vector<lmLocaleManagerBase*> managers_;
};

AttachedManagers& attached_managers() {
    static tarnel::NeverDestroyed<AttachedManagers> managers;
    return managers.get();
}

} // namespace

lmLocaleManagerBase::lmLocaleManagerBase() = default;

lmLocaleManagerBase::~lmLocaleManagerBase() {
    attached_managers().remove(this);
}

void lmLocaleManagerBase::attach(HINSTANCE module) {
    attached_module_ = module;
    attached_managers().add(this);
    reload_resource_module();
}

void lmLocaleManagerBase::detach() {
    attached_managers().remove(this);
    attached_module_ = nullptr;
}

bool lmLocaleManagerBase::find_resource_dll(HINSTANCE module, const std::string& name,
                                            std::string& path) {
    return tarnel::find_resource_script(module, name, path);
}

HINSTANCE lm_load_library(const char* path) {
    return LoadLibraryA(path);
}

void lm_reload_resources() {
    for (lmLocaleManagerBase* manager : attached_managers().all()) {
        manager->reload_resource_module();
    }
}
