#pragma once

#include "platform/base/types.h"
#include "platform/registry/database.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

namespace tarnel {

enum class HiveKind { User, Machine };

/// What a hive's file says of how it is laid out.
constexpr const char* hive_version = "1";

/// For who looks on: does not wait for other processes as long as usual.
constexpr const char* be_impatient = "PRAGMA busy_timeout = 1000";

/// Behind the name of a damaged file that was set aside; a time follows.
constexpr const char* damaged_mark = ".damaged-";

/// Where the file of a hive lies, empty when there is no place for it.
std::filesystem::path hive_path(HiveKind kind);

/// Opens the hive's file, after making it or setting a damaged one aside where that is needed.
/// None when there is no file and none can be made, or it cannot be opened; what a person must know
/// of that is in `news`. `suspect`: its content was found damaged in use.
std::optional<Database> open_hive(HiveKind kind, bool suspect, std::string& news);

/// The connection of a hive behind its lock: opened at first need, opened again after its file was
/// moved away or found damaged.
class Store {
  public:
    explicit Store(HiveKind kind) : kind_(kind) {}

    /// Runs `work` on the database and returns its error code; `absent` when there is none.
    template <typename Work>
    LONG use(DWORD absent, Work work) {
        std::string news;
        LONG result = 0;
        {
            const std::lock_guard guard(hive_lock_);
            result = attempt(absent, work, news);
        }
        tell(news);
        return result;
    }

    void close();

    // Around fork: the child must not inherit a connection, nor the lock in another thread's hands.
    void before_fork();
    void after_fork();

  private:
    template <typename Work>
    LONG attempt(DWORD absent, Work& work, std::string& news) {
        try {
            open_now(news);
            return static_cast<LONG>(database_ ? work(*database_) : absent);
        } catch (const DatabaseError& error) {
            return failed(error, news);
        }
    }

    void open_now(std::string& news);
    LONG failed(const DatabaseError& error, std::string& news);
    void tell(const std::string& news);

    const HiveKind kind_;
    std::mutex hive_lock_;
    std::optional<Database> database_;
    bool suspect_ = false;
    std::string told_; // what was wrong last, said once
};

} // namespace tarnel
