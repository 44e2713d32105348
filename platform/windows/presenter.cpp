#include "platform/windows/presenter.h"

#include "platform/base/never_destroyed.h"
#include "platform/windows/presenter_process.h"
#include "platform/windows/ready_presenter.h"

#include <mutex>
#include <utility>

namespace tarnel {
namespace {

struct Holder {
    std::mutex presenter_lock;
    std::shared_ptr<Presenter> presenter;
    bool chosen = false; ///< by the application, or by the first need
};

Holder& holder() {
    static NeverDestroyed<Holder> instance;
    return instance.get();
}

} // namespace

Presenter::~Presenter() = default;

void set_presenter(std::shared_ptr<Presenter> presenter) {
    Holder& held = holder();
    const std::lock_guard guard(held.presenter_lock);
    held.presenter.swap(presenter); // the old one goes after the lock
    held.chosen = true;
}

std::shared_ptr<Presenter> ready_presenter() {
    std::shared_ptr<Presenter> presenter;
    {
        Holder& held = holder();
        const std::lock_guard guard(held.presenter_lock);
        if (!std::exchange(held.chosen, true)) {
            held.presenter = std::make_shared<ProcessPresenter>();
        }
        presenter = held.presenter;
    }
    return presenter && presenter->ready() ? presenter : nullptr;
}

} // namespace tarnel
