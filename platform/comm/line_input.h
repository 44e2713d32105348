#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>

namespace tarnel {

/// What a line has received and nobody has read yet, with the places of its breaks. A tty that
/// marks line errors in the stream (255 0 x for a damaged x, 255 255 for a sound 255) has its marks
/// taken out here, and the places stay. Knows no descriptor and no lock.
class LineInput {
  public:
    static constexpr std::size_t capacity = 4096;

    explicit LineInput(bool marked) : marked_(marked) {}

    /// How many bytes can be added now; 0 while the buffer is (nearly) full.
    std::size_t room() const {
        const std::size_t used = end_ - begin_;
        return used + 2 < capacity ? capacity - used - 2 : 0; // a cut mark may bring two more
    }

    /// Adds bytes, at most room(). True when a line error stood among them.
    bool add(std::span<const char> bytes);

    /// A break after all that has been received.
    void add_break() { breaks_.push_back(received_); }

    /// How many bytes have been received so far: the place of the end in the stream.
    std::uint64_t received() const { return received_; }

    /// Bytes are missing somewhere after `place`, nobody knows where: a break before each byte
    /// since then, and one after the last.
    void spoil_since(std::uint64_t place);

    /// A mark that is only half there will not be completed.
    void forget_half_mark() { state_ = State::plain; }

    /// Bytes that can be read before the next break.
    std::size_t available() const;

    /// Reads up to `size` bytes, never past a break but the one that it starts at.
    std::size_t take(char* target, std::size_t size);

    /// Whether the stream stands at a break, which is thereby taken.
    bool take_break();

    /// Drops what is held; the breaks in it become one at the end.
    void clear();

  private:
    enum class State { plain, mark, error };

    void append(char c);
    bool add_slowly(std::span<const char> marked);

    const bool marked_;
    std::array<char, capacity> bytes_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::uint64_t received_ = 0;
    State state_ = State::plain;
    std::deque<std::uint64_t> breaks_; ///< places, in order; rarely any
};

} // namespace tarnel
