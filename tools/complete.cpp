#include "platform/comm/port_list.h"
#include "protocols/ProtocolRegister.h"
#include "tools/line_settings.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <string_view>

// `tarnel complete` is what the shells ask when somebody presses Tab.

namespace {

/// What can stand at the place of the last word, with a word of help.
class Candidates {
  public:
    explicit Candidates(const CLI::App& tool) : verb_(&tool) {}

    /// Goes on by one word that is complete.
    void pass(const std::string& word) {
        if (wanted_) {
            wanted_ = nullptr;
        } else if (word.starts_with("-")) {
            for (const CLI::Option* option : options_of(*verb_)) {
                if (option->check_name(word) && option->get_expected_max() > 0) {
                    wanted_ = option;
                }
            }
        } else if (const CLI::App* const next = subverb(word)) {
            verb_ = next;
            positional_ = 0;
        } else {
            ++positional_;
        }
    }

    void print(const std::string& begun) {
        begun_ = begun;
        if (wanted_) {
            offer_values(*wanted_);
        } else if (begun.starts_with("-")) {
            for (const CLI::Option* option : options_of(*verb_)) {
                for (const std::string& name : option->get_lnames()) {
                    offer("--" + name, option->get_description());
                }
            }
        } else {
            for (const CLI::App* next : verb_->get_subcommands(&is_shown)) {
                offer(next->get_name(), next->get_description());
            }
            offer_positional();
        }
    }

  private:
    static bool is_shown(const CLI::App* verb) {
        return !verb->get_name().empty() && !verb->get_group().empty();
    }

    const CLI::App* subverb(const std::string& name) const {
        const auto found =
            verb_->get_subcommands([&](const CLI::App* verb) { return verb->check_name(name); });
        return found.empty() ? nullptr : found.front();
    }

    void offer_positional() {
        std::size_t place = 0;
        for (const CLI::Option* option : options_of(*verb_)) {
            if (option->get_positional() && place++ == positional_) {
                offer_values(*option);
            }
        }
    }

    void offer_values(const CLI::Option& option) {
        const std::string name = option.get_name(option.get_positional());
        const std::string parent = verb_->get_parent()->get_name();
        const bool is_port = name == "--port" || (name == "PATH" && parent == "ports") ||
                             (name == "PORT" && verb_->get_name() == "doctor");
        if (is_port) {
            for (const tarnel::PortInfo& port : tarnel::list_ports()) {
                offer(port.device, port.driver);
                offer(port.by_id, port.device);
            }
        } else if (name == "--line" || parent == "line") {
            for (const std::string& line : line_names()) {
                offer(line, "");
            }
        } else if (name == "PROTOCOL") {
            for (const auto* node = ProtocolRegister::m_Root; node; node = node->next) {
                offer(node->name, "");
            }
        } else {
            offer_set(option.get_type_name());
        }
    }

    /// "TEXT:{table,csv,json}"
    void offer_set(const std::string& type) {
        const std::size_t open = type.find('{');
        if (open != type.npos) {
            const std::string inside = type.substr(open + 1, type.find('}') - open - 1);
            for (const std::string& value : CLI::detail::split(inside, ',')) {
                offer(value, "");
            }
        }
    }

    void offer(const std::string& word, const std::string& help) const {
        if (!word.empty() && word.starts_with(begun_)) {
            fmt::print("{}{}{}\n", word, help.empty() ? "" : "\t", help);
        }
    }

    const CLI::App* verb_;
    const CLI::Option* wanted_ = nullptr; ///< the option that waits for its value
    std::size_t positional_ = 0;
    std::string begun_;
};

} // namespace

void add_complete_verb(CLI::App& tool) {
    CLI::App* verb =
        tool.add_subcommand("complete", "What can stand at the place of the last word");
    verb->group(""); // for shells
    verb->prefix_command();
    verb->callback([verb, &tool] {
        std::vector<std::string> words = verb->remaining();
        if (words.empty()) {
            words.emplace_back();
        }
        Candidates candidates(tool);
        for (std::size_t i = 0; i + 1 < words.size(); ++i) {
            candidates.pass(words[i]);
        }
        candidates.print(words.back());
    });
}
