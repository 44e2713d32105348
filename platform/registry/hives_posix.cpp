#include "platform/base/never_destroyed.h"
#include "platform/registry/hive.h"

#include <pthread.h>

namespace tarnel {
namespace {

struct Hives {
    Hive user{HiveKind::User};
    Hive machine{HiveKind::Machine};
};

Hives& hives();

void before_fork() {
    hives().machine.store().before_fork();
    hives().user.store().before_fork();
}

void after_fork() {
    hives().user.store().after_fork();
    hives().machine.store().after_fork();
}

Hives& hives() {
    static NeverDestroyed<Hives> instance;
    // SQLite keeps what a process has locked by file, and a child would believe to hold the locks
    // of its parent: so the parent has no connection at the moment of a fork.
    static const int watching = ::pthread_atfork(&before_fork, &after_fork, &after_fork);
    static_cast<void>(watching);
    return instance.get();
}

} // namespace

Hive& user_hive() {
    return hives().user;
}

Hive& machine_hive() {
    return hives().machine;
}

} // namespace tarnel
