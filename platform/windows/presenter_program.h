#pragma once

#include "platform/base/descriptor.h"
#include "platform/threads/deadline.h"

#include <unistd.h>

#include <memory>
#include <string>

namespace tarnel {

/// The program as it serves this process. It is no child of this process, so that nobody who waits
/// for children meets it; it ends by itself when this object or the process does. Not to be used on
/// several threads at once, except for kill().
class PresenterProgram {
  public:
    /// Null, with the reason in `fault`, when dialogs cannot be shown. What the program has to say
    /// besides goes to the descriptor `words`.
    static std::shared_ptr<PresenterProgram> start(std::string& fault, int words = STDERR_FILENO);

    /// Whether it is still awake; asks, and waits for the answer only so long.
    bool is_awake();

    /// A new line for the dialogs of one thread; none when the program does not take it.
    Descriptor new_line();

    /// For one that has stopped, which would not notice the end of its lines.
    void kill() const;

  private:
    explicit PresenterProgram(Descriptor control) : control_(std::move(control)) {}

    bool launch(const std::string& path, Descriptor its_end, int words, std::string& fault);
    std::string receive(const Deadline& deadline);

    Descriptor control_;
    Descriptor process_; ///< a descriptor of the process
};

} // namespace tarnel
