#pragma once

#include "platform/comm/port_list.h"

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

// `tarnel doctor` looks at one area after the other, each in a file of its own.

enum class Level { ok, warning, problem };

/// One thing that was looked at.
struct Finding {
    Level level;
    std::string what;
    std::string cure; ///< a command, or what else to do; "" when there is nothing to do
};

/// Whether one of the library's services works here.
struct Service {
    std::string name;
    std::string state;
};

/// What was found in an area.
struct Diagnosis {
    std::vector<Finding> findings;
    std::vector<Service> services;

    void add(Level level, std::string what, std::string cure = {}) {
        findings.push_back({level, std::move(what), std::move(cure)});
    }

    /// `limits` says what works nevertheless not.
    void works(std::string service, const std::string& limits = {}) {
        services.push_back({std::move(service), limits.empty() ? "works" : "works: " + limits});
    }

    void fails(std::string service, std::string why) {
        if (why.ends_with('.')) {
            why.pop_back();
        }
        services.push_back({std::move(service), "does not: " + why});
    }
};

/// The ports in `names`; all that there are when there are no names.
Diagnosis examine_ports(const std::vector<std::string>& names);
Diagnosis examine_network();
Diagnosis examine_settings();
Diagnosis examine_desktop();
Diagnosis examine_language();
Diagnosis examine_sound();
Diagnosis examine_files();

/// Adds what is known of programs that disturb ports.
void look_for_intruders(const std::vector<tarnel::PortInfo>& ports, Diagnosis& diagnosis);

/// Adds what is known of the program that shows dialogs; on the display, it is tried.
void examine_dialogs(bool has_server, Diagnosis& diagnosis);

/// Whether a look was given up that goes on on its thread.
extern std::atomic<bool> something_hangs;

/// What `look` finds; nothing when it takes longer, and then it is left to itself.
template <typename Look>
std::optional<std::invoke_result_t<Look>> within(std::chrono::seconds limit, Look look) {
    std::packaged_task task(std::move(look));
    auto result = task.get_future();
    std::thread(std::move(task)).detach();
    if (result.wait_for(limit) == std::future_status::ready) {
        return result.get();
    }
    something_hangs = true;
    return std::nullopt;
}

/// The name of whom this process runs as.
std::string user_name();

/// How this user gets the right to use a device.
std::string cure_of_rights(const std::string& device);

/// `path` without detours, as far as it exists.
std::string clean(const std::string& path);

/// `path` as a shell takes it.
std::string shell_word(const std::string& path);
