#pragma once

#include "protocols/MetrolecParser.h"
#include "protocols/PercevalParser.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A protocol at the end of a line: what it makes of the blocks that come in.
class Receiver {
  public:
    virtual ~Receiver() = default;

    void receive(const std::string& block) {
        ring.Put(block.data(), static_cast<int>(block.size()));
        take_points();
    }

    /// Up to 100 points, as when a block has come in.
    void take_points() {
        __PointMMT point;
        for (int taken = 0; taken < 100 && extract(point) == 2; ++taken) {
            points.push_back(point);
        }
    }

    /// Until nothing moves, as when any number of blocks had come in.
    void drain() {
        int held = -1;
        while (held != ring.GetNbChar()) {
            held = ring.GetNbChar();
            take_points();
        }
    }

    bool has_room(std::size_t count) const {
        return static_cast<int>(count) < ring.GetTaille() - ring.GetNbChar();
    }

    ERCirBuf ring;
    std::vector<__PointMMT> points;
    tarnel::ParseState parse;

  private:
    virtual int extract(__PointMMT& point) = 0;
};

class Metrolec : public Receiver {
    int extract(__PointMMT& point) override {
        return tarnel::extract_metrolec(ring, parse, counter_, point);
    }

    int counter_ = 0;
};

class Perceval : public Receiver {
    int extract(__PointMMT& point) override { return tarnel::extract_perceval(ring, parse, point); }
};

/// What a machine's receiver makes of a text that comes in blocks. A text that stalls it ends
/// there.
template <typename Machine>
std::vector<__PointMMT> points_of(const std::string& text,
                                  const std::function<std::size_t()>& block_length) {
    Machine machine;
    for (std::size_t at = 0; at < text.size();) {
        const std::string block = text.substr(at, block_length());
        if (!machine.has_room(block.size())) {
            machine.drain();
        }
        if (!machine.has_room(block.size())) {
            break;
        }
        machine.receive(block);
        at += block.size();
    }
    machine.drain();
    return machine.points;
}

/// Compared bit by bit.
inline bool same(const std::vector<__PointMMT>& left, const std::vector<__PointMMT>& right) {
    const auto bits = [](const __PointMMT& p) {
        using Coordinates = std::array<double, 6>;
        return std::bit_cast<std::array<std::uint64_t, 6>>(
            Coordinates{p.x, p.y, p.z, p.x2, p.y2, p.z2});
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](const __PointMMT& a, const __PointMMT& b) {
                          return a.number == b.number && bits(a) == bits(b);
                      });
}
