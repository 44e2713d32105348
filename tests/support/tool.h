#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace support {

/// The tool, run as a person runs it. Every wait ends after a minute, with failure.
class Tool {
  public:
    /// `arguments` as at a shell's prompt: with quotes and redirections.
    explicit Tool(const std::string& arguments);
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;

    /// Kills what still runs.
    ~Tool();

    /// Waits until standard output, or standard error, has brought `text`.
    bool prints(const std::string& text) { return wait_for(output_, text); }

    bool says(const std::string& text) { return wait_for(error_, text); }

    /// What they have brought so far.
    const std::string& output() const { return output_.text; }

    const std::string& diagnostics() const { return error_.text; }

    void signal(int number) const;

    /// Nobody reads standard output from now on.
    void close_output();

    /// Waits for the end: the exit code, or what makes any comparison fail.
    int wait();

  private:
    struct Channel {
        int descriptor = -1;
        std::string text;
    };

    bool wait_for(const Channel& channel, const std::string& text);
    bool receive(int milliseconds);

    pid_t process_ = -1;
    Channel output_;
    Channel error_;
};

struct ToolResult {
    int exit_code;
    std::string output;
    std::string diagnostics;
};

/// Whether `text` contains `part`; shows it otherwise.
inline testing::AssertionResult has(const std::string& text, const std::string& part) {
    return (text.find(part) != std::string::npos ? testing::AssertionSuccess()
                                                 : testing::AssertionFailure())
           << text;
}

/// Runs the tool to its end.
ToolResult run_tool(const std::string& arguments);

struct ToolCall {
    std::string arguments;
    int exit_code;
    std::string output;
};

/// Makes one call after the other, each with `more` arguments.
void expect(const std::vector<ToolCall>& calls, const std::string& more = "");

} // namespace support
