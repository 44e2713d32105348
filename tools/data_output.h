#pragma once

#include <string>
#include <string_view>

constexpr int exit_file_exists = 6;
constexpr int exit_not_written = 7;

/// Where a verb's data go: standard output, or a file. Each text is there when write() returns.
class DataOutput {
  public:
    /// With an empty `path` standard output. A file that exists is refused unless it is to be
    /// appended to; the tool ends with the exit codes above.
    DataOutput(const std::string& path, bool append);
    DataOutput(const DataOutput&) = delete;
    DataOutput& operator=(const DataOutput&) = delete;
    ~DataOutput();

    bool is_file() const { return file_ >= 0; }

    /// Whether nothing has been written to it before, so that a heading is due.
    bool begins() const { return size_ == 0; }

    int descriptor() const;

    /// False when nobody reads any more, or when nobody takes the text and `stop` is readable.
    /// Throws std::system_error, with what the system says, when it cannot be written; a file then
    /// ends with the last whole text.
    bool write(std::string_view text, int stop);

  private:
    int file_ = -1;
    long size_ = 0; ///< of what is whole
    std::string name_ = "Standard output";
};

/// Ends the tool because of a file that could not be opened, for the reason `error`; `instead` is
/// what to use where one exists.
[[noreturn]] void fail_to_open(const std::string& path, int error,
                               const char* instead = "another name");
