#include "platform/registry/store.h"

#include "platform/base/diagnostics.h"
#include "platform/base/last_error.h"

namespace tarnel {

void Store::close() {
    const std::lock_guard guard(hive_lock_);
    database_.reset();
    told_.clear();
}

void Store::before_fork() {
    hive_lock_.lock();
    database_.reset();
}

void Store::after_fork() {
    hive_lock_.unlock();
}

void Store::open_now(std::string& news) {
    if (database_ && !suspect_ && !database_->moved()) {
        return;
    }
    database_.reset();
    database_ = open_hive(kind_, suspect_, news);
    suspect_ = suspect_ && !database_;
    if (news == told_) {
        news.clear();
    } else {
        told_ = news;
    }
}

LONG Store::failed(const DatabaseError& error, std::string& news) {
    if (error.damaged() && !suspect_) {
        news = "registry: " + hive_path(kind_).string() +
               " is damaged; the next call of this process sets it aside";
        suspect_ = true;
    }
    switch (error.code) {
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_CANTOPEN: // of a journal, in a folder that may not be written
        return ERROR_ACCESS_DENIED;
    case SQLITE_BUSY:
        return ERROR_BUSY;
    default:
        return ERROR_REGISTRY_IO_FAILED;
    }
}

void Store::tell(const std::string& news) {
    if (!news.empty()) {
        report(news);
    }
}

} // namespace tarnel
