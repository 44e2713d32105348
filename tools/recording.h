#pragma once

#include "protocols/PointObserver.h"

#include <cstdint>
#include <fstream>
#include <optional>
#include <span>
#include <string>

// A recording: what a port has brought, byte for byte, with the time of each block. It begins with
// a header of readable lines up to an empty one; then come the blocks, each with a line of its own:
//
//   TARNEL RECORDING 1
//   protocol: PERCEVAL MICRON
//   port: /dev/ttyUSB0 9600,8,0,1 (   )
//   started: 2025-03-01T08:15:30.125000Z
//
//   @250113 26                   microseconds since the start, number of bytes; then these bytes
//   +0012345 -0000678 +0004200   and a line feed
//   !900470                      bytes are missing or damaged here
//
// Each block reaches the file in one piece, so of a recorder that was killed at most the last block
// is cut.

struct RecordingHeader {
    std::string protocol; ///< empty: unknown
    std::string port;     ///< its settings, for a person
};

/// Writes a recording. Not for two threads at once.
class RecordingWriter {
  public:
    /// Throws std::system_error; a file that exists is refused with std::errc::file_exists.
    RecordingWriter(const std::string& path, const RecordingHeader& header,
                    const tarnel::ReadTime& start);
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;
    ~RecordingWriter();

    /// Throw std::system_error when the file cannot take it, for instance on a full disk.
    void add_bytes(std::span<const char> bytes, const tarnel::ReadTime& time);
    void add_break(const tarnel::ReadTime& time);

  private:
    std::int64_t since_start(const tarnel::ReadTime& time) const;
    void write(std::string_view text);

    int file_;
    std::int64_t start_ns_;
    std::string block_; ///< keeps its memory from block to block
};

struct RecordedBlock {
    std::int64_t microseconds = 0; ///< since the start
    bool is_break = false;         ///< bytes are missing or damaged here; it has none itself
    std::string bytes;
};

/// Reads a recording. Both functions throw std::runtime_error with a text that names the file and
/// the byte at which it is damaged.
class RecordingReader {
  public:
    explicit RecordingReader(const std::string& path);

    const RecordingHeader& header() const { return header_; }

    /// The next block; nothing at the end. Of a block that was cut, what there is of it.
    std::optional<RecordedBlock> next();

    /// Whether the file ended in the middle of a block; known at the end.
    bool was_cut() const { return was_cut_; }

  private:
    std::string header_line(std::string_view name);
    std::optional<std::string> line();
    std::string bytes(std::size_t count);
    [[noreturn]] void damaged(std::int64_t at, const std::string& what) const;

    const std::string path_;
    std::ifstream file_;
    RecordingHeader header_;
    std::int64_t position_ = 0;
    bool was_cut_ = false;
};
