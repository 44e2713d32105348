#pragma once

#include "core/export.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

/// A ring of characters, first in, first out, whose storage never grows. `Put` keeps one slot
/// free, so a ring of 1024 slots takes 1023 characters before it counts as full.
///
/// It takes no lock: whoever shares a ring between threads locks it. Nothing but the constructor
/// allocates. Negative positions and numbers are harmless: there is no character at the former,
/// and the latter consume nothing.
class TARNEL_API ERCirBuf {
  public:
    /// What reading gives where there is no character. A held 0xFF reads the same; `GetNbChar`
    /// tells the two apart.
    static constexpr char no_character = '\xFF';

    /// An empty ring of `capacity` slots, at least two.
    explicit ERCirBuf(int capacity = 1024);

    ERCirBuf(const ERCirBuf&) = delete;
    ERCirBuf& operator=(const ERCirBuf&) = delete;

    virtual ~ERCirBuf();

    /// Called by `Put` for as long as the ring is full. An override makes room, by any operation
    /// of the ring; one that makes none is called for ever. The base drops all held characters.
    virtual void OnDebord();

    /// Appends one character.
    void Put(char c) {
        while (is_full()) {
            OnDebord();
        }
        storage_.get()[write_] = c;
        write_ = next(write_);
        ++count_;
    }

    /// Appends `length` characters, zeros included, exactly as one `Put` after another would. With
    /// a length of 0 or less: the characters of the text `data` up to its terminating zero.
    void Put(const char* data, int length);

    /// Removes and returns the oldest character; `no_character` when the ring is empty.
    char Get() {
        if (count_ == 0) {
            return no_character;
        }
        const char c = storage_.get()[read_];
        read_ = next(read_);
        --count_;
        return c;
    }

    /// The character `position` places behind the oldest, which stays; `no_character` when no
    /// character is held there.
    char operator[](int position) const {
        if (position < 0 || position >= count_) {
            return no_character;
        }
        return storage_.get()[slot_after(read_, position)];
    }

    /// Removes the `n` oldest characters, or all when fewer are held.
    void Consomme(int n) {
        if (n >= count_) {
            read_ = write_;
            count_ = 0;
        } else if (n > 0) {
            read_ = slot_after(read_, n);
            count_ -= n;
        }
    }

    /// Puts one character in front of the oldest, into the slot that `Put` keeps free if need be;
    /// ignored when every slot is taken.
    void PutBack(char c);

    /// Drops all held characters.
    void RAZ();

    /// The number of characters held.
    int GetNbChar() const { return count_; }

    /// The held characters in place, in order: the second piece is what lies at the start of the
    /// storage when they go round its end. Valid until the ring is changed.
    std::array<std::string_view, 2> runs() const {
        const char* const storage = storage_.get();
        const auto held = static_cast<std::size_t>(count_);
        const std::size_t first = std::min(held, static_cast<std::size_t>(capacity_ - read_));
        return {std::string_view(storage + read_, first), std::string_view(storage, held - first)};
    }

    /// The number of slots.
    int GetTaille() const { return capacity_; }

  private:
    // The count tells it, not the indices: they are equal both when the ring is empty and when
    // `PutBack` has taken the last slot.
    bool is_full() const { return count_ >= capacity_ - 1; }

    int next(int slot) const { return slot + 1 == capacity_ ? 0 : slot + 1; }

    // Compares before it adds, so that no sum leaves the range of an int.
    int slot_after(int slot, int steps) const {
        const int to_end = capacity_ - slot;
        return steps < to_end ? slot + steps : steps - to_end;
    }

    std::unique_ptr<char[]> storage_;
    int write_ = 0;
    int read_ = 0;
    int count_ = 0;
    int capacity_;
};
