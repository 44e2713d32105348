#include "tools/recording.h"

#include "tools/time_stamp.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <stdexcept>
#include <system_error>

namespace {

constexpr std::string_view first_line = "TARNEL RECORDING 1";
constexpr std::size_t longest_line = 500;
constexpr std::size_t largest_block = 1 << 20;

/// Without the line ends that would end a header line early.
std::string one_line(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text.substr(0, longest_line / 2);
}

/// Reads a number and takes it from `text`; false when there is none.
template <typename Number>
bool take_number(std::string_view& text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() && number >= 0;
}

bool take(std::string_view& text, char c) {
    const bool there = text.starts_with(c);
    text.remove_prefix(there ? 1 : 0);
    return there;
}

/// Reads the line that a block begins with; false when it is none.
bool parse_block_line(std::string_view text, RecordedBlock& block, std::size_t& count) {
    block.is_break = take(text, '!');
    if (!block.is_break && !take(text, '@')) {
        return false;
    }
    return take_number(text, block.microseconds) &&
           (block.is_break ||
            (take(text, ' ') && take_number(text, count) && count <= largest_block)) &&
           text.empty();
}

} // namespace

RecordingWriter::RecordingWriter(const std::string& path, const RecordingHeader& header,
                                 const tarnel::ReadTime& start)
    : file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)),
      start_ns_(start.monotonic_ns) {
    if (file_ < 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    write(fmt::format("{}\nprotocol: {}\nport: {}\nstarted: {}\n\n", first_line,
                      one_line(header.protocol), one_line(header.port), utc_time(start.utc_us)));
}

RecordingWriter::~RecordingWriter() {
    ::close(file_);
}

void RecordingWriter::add_bytes(std::span<const char> bytes, const tarnel::ReadTime& time) {
    block_.clear();
    fmt::format_to(std::back_inserter(block_), "@{} {}\n", since_start(time), bytes.size());
    block_.append(bytes.data(), bytes.size());
    block_ += '\n';
    write(block_);
}

void RecordingWriter::add_break(const tarnel::ReadTime& time) {
    write(fmt::format("!{}\n", since_start(time)));
}

std::int64_t RecordingWriter::since_start(const tarnel::ReadTime& time) const {
    return std::max<std::int64_t>(0, (time.monotonic_ns - start_ns_) / 1000);
}

void RecordingWriter::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file_, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "The recording");
        }
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

RecordingReader::RecordingReader(const std::string& path)
    : path_(path), file_(path, std::ios::binary) {
    if (!file_) {
        throw std::runtime_error(fmt::format("{} cannot be read.", path));
    }
    if (line() != first_line) {
        damaged(0, fmt::format("it is no recording of this version, '{}'", first_line));
    }
    header_.protocol = header_line("protocol: ");
    header_.port = header_line("port: ");
    header_line("started: ");
    header_line("");
}

std::optional<RecordedBlock> RecordingReader::next() {
    const std::int64_t start = position_;
    const std::optional<std::string> text = line();
    if (!text) {
        return std::nullopt;
    }
    RecordedBlock block;
    std::size_t count = 0;
    if (!parse_block_line(*text, block, count)) {
        damaged(start, "no block begins here");
    }
    if (!block.is_break) {
        block.bytes = bytes(count);
    }
    return block;
}

std::string RecordingReader::header_line(std::string_view name) {
    const std::int64_t start = position_;
    const std::optional<std::string> text = line();
    if (!text || !text->starts_with(name)) {
        damaged(start, fmt::format("the header's line '{}' is missing", name));
    }
    return text->substr(name.size());
}

/// A line without its end; nothing when the file ends before it.
std::optional<std::string> RecordingReader::line() {
    std::string text;
    for (int c = file_.get(); c != '\n'; c = file_.get()) {
        if (c == std::ifstream::traits_type::eof()) {
            was_cut_ = was_cut_ || !text.empty();
            return std::nullopt;
        }
        if (text.size() == longest_line) {
            damaged(position_, "no line of a recording is that long");
        }
        text += static_cast<char>(c);
    }
    position_ += static_cast<std::int64_t>(text.size()) + 1;
    return text;
}

/// The bytes of a block, and the line feed after them.
std::string RecordingReader::bytes(std::size_t count) {
    std::string text(count, '\0');
    file_.read(text.data(), static_cast<std::streamsize>(count));
    text.resize(static_cast<std::size_t>(file_.gcount()));
    position_ += file_.gcount();
    const int end = file_.get();
    was_cut_ = end == std::ifstream::traits_type::eof();
    if (!was_cut_ && end != '\n') {
        damaged(position_, "the block does not end here");
    }
    ++position_;
    return text;
}

void RecordingReader::damaged(std::int64_t at, const std::string& what) const {
    throw std::runtime_error(fmt::format("{} is damaged at byte {}: {}.", path_, at, what));
}
