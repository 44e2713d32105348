#include "platform/windows/presenter_check.h"
#include "tools/doctor.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr const char* service = "dialogs";

/// How to come by a presenter that starts.
const char* cure_of_fault(const std::string& fault) {
    return fault.find("platform plugin") != fault.npos
               ? "sudo apt-get install --reinstall libqt6gui6"
           : fault.find("shared libraries") != fault.npos ? "sudo apt-get install libqt6widgets6"
                                                          : "Install tarnel-presenter anew";
}

/// What is wrong with the files of the presenter; nothing when there is one.
std::optional<Finding> missing_presenter() {
    const auto places = tarnel::presenter_places();
    const auto first_with = [&places](int right) {
        return std::ranges::find_if(
            places, [right](const auto& place) { return ::access(place.c_str(), right) == 0; });
    };
    if (first_with(X_OK) != places.end()) {
        return std::nullopt;
    }
    if (places.front().empty()) {
        return Finding{Level::warning, "TARNEL_PRESENTER is empty, so dialogs are switched off.",
                       "unset TARNEL_PRESENTER"};
    }
    if (const auto there = first_with(F_OK); there != places.end()) {
        return Finding{Level::problem,
                       fmt::format("You may not run {}, which shows dialogs.", clean(*there)),
                       "sudo chmod 755 " + shell_word(clean(*there))};
    }
    if (places.size() == 1) {
        return Finding{Level::problem,
                       fmt::format("{}, which shows dialogs, is missing.", clean(places.front())),
                       "unset TARNEL_PRESENTER"};
    }
    return Finding{Level::problem, "The program tarnel-presenter, which shows dialogs, is missing.",
                   "sudo apt-get install tarnel-presenter"};
}

std::optional<Finding> failing_presenter() {
    std::string fault = tarnel::presenter_fault();
    if (fault.empty()) {
        return std::nullopt;
    }
    fault += fault.ends_with('.') ? "" : ".";
    return Finding{Level::problem, "The program that shows dialogs does not start: " + fault,
                   cure_of_fault(fault)};
}

} // namespace

void examine_dialogs(bool has_server, Diagnosis& diagnosis) {
    auto fault = missing_presenter();
    if (fault && !has_server) {
        fault->level = Level::warning; // nothing is shown here anyway
    } else if (!fault && has_server) {
        fault = failing_presenter();
    }
    if (fault) {
        diagnosis.findings.push_back(*fault);
        diagnosis.fails(service, fault->what);
    } else if (has_server) {
        diagnosis.add(Level::ok, "The program that shows dialogs starts.");
        diagnosis.works(service);
    } else {
        diagnosis.fails(service, "there is no X server that answers");
    }
}
