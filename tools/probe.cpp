#include "protocols/MetrolecProtocol.h"
#include "tools/dialog_session.h"
#include "tools/verbs.h"

#include <fmt/format.h>

// `tarnel probe` asks for a probe, as an application does through its protocol.

namespace {

void choose_probe(const std::string& picture) {
    const DialogSession session(picture);
    MPOProtocol protocol;
    LONG probe = protocol.GetProbeID();
    if (!protocol.OpenProbeSelectionDialogBox(probe)) {
        session.end_without_answer(IDCANCEL);
    }
    fmt::print("probe {}\n", probe);
    protocol.SelectProbe(probe);
}

} // namespace

void add_probe_verb(CLI::App& tool) {
    auto picture = std::make_shared<std::string>();
    CLI::App* verb = tool.add_subcommand("probe", "Ask for the number of a probe, in a dialog");
    DialogSession::add_picture_option(*verb, *picture);
    verb->footer(fmt::format("Prints the number, and has the person change the probe.\n"
                             "Exit codes: 0 chosen, {}",
                             dialog_exit_codes));
    verb->callback([picture] { choose_probe(*picture); });
}
