#include "serial/RingBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <limits>
#include <random>
#include <string>

namespace {

// What happens when the ring is full. The last reaction leaves a small ring full once more.
enum Reaction { drop_all, drop_one, drop_two, drop_all_and_put };

template <typename Ring>
void react(Ring& ring, Reaction reaction, int call) {
    if (reaction == drop_one) {
        ring.Get();
    } else if (reaction == drop_two || call % 2 == 0) {
        ring.Consomme(2);
    } else {
        ring.RAZ();
        ring.Put('!');
    }
}

class ReactingRing : public ERCirBuf {
  public:
    ReactingRing(int capacity, Reaction reaction) : ERCirBuf(capacity), reaction_(reaction) {}

    void OnDebord() override {
        ++calls;
        reaction_ == drop_all ? ERCirBuf::OnDebord() : react(*this, reaction_, calls);
    }

    int calls = 0;

  private:
    Reaction reaction_;
};

// The same queue without a ring.
struct Model {
    void Put(char c) {
        while (static_cast<int>(held.size()) >= capacity - 1) {
            ++calls;
            reaction == drop_all ? held.clear() : react(*this, reaction, calls);
        }
        held.push_back(c);
    }

    void Put(const char* data, int length) {
        std::for_each(data, data + length, [this](char c) { Put(c); });
    }

    char Get() {
        const char c = held.empty() ? '\xFF' : held.front();
        Consomme(1);
        return c;
    }

    void Consomme(int n) {
        const int taken = std::clamp(n, 0, static_cast<int>(held.size()));
        held.erase(held.begin(), held.begin() + taken);
    }

    void PutBack(char c) {
        if (static_cast<int>(held.size()) < capacity) {
            held.push_front(c);
        }
    }

    void RAZ() { held.clear(); }

    int capacity;
    Reaction reaction;
    std::deque<char> held = {};
    int calls = 0;
};

struct Operation {
    std::uint_fast32_t kind;
    char c;
    int n;
    std::string block;
};

template <typename Ring>
char apply(const Operation& operation, Ring& ring) {
    if (operation.kind == 0) {
        ring.RAZ();
    } else if (operation.kind == 1) {
        ring.Consomme(operation.n);
    } else if (operation.kind == 2) {
        ring.PutBack(operation.c);
    } else if (operation.kind == 3) {
        ring.Put(operation.block.data(), static_cast<int>(operation.block.size()));
    } else if (operation.kind > 5) {
        ring.Put(operation.c);
    }
    return operation.kind == 4 || operation.kind == 5 ? ring.Get() : '\0';
}

std::string contents(const ERCirBuf& ring) {
    std::string held;
    for (int position = 0; position < ring.GetNbChar(); ++position) {
        held += ring[position];
    }
    return held;
}

void compare_with_model(int capacity, Reaction reaction) {
    std::mt19937 random(static_cast<unsigned>(capacity));
    ReactingRing ring(capacity, reaction);
    Model model{std::max(capacity, 2), reaction};
    for (int count = 0; count < 5000; ++count) {
        const char c = "ab\0\xFF"[random() % 4];
        const int n = static_cast<int>(random() % 12) - 1;
        const Operation operation{random() % 9, c, n, std::string(1 + random() % 20, c)};
        ASSERT_EQ(apply(operation, ring), apply(operation, model));
        ASSERT_EQ(contents(ring), std::string(model.held.begin(), model.held.end()));
        ASSERT_EQ(ring.calls, model.calls);
    }
    EXPECT_EQ(ring.GetTaille(), model.capacity);
}

TEST(RingBuffer, behavesAsAQueueUnderEveryOverflowReaction) {
    for (int capacity = 1; capacity <= 9; ++capacity) {
        for (const auto reaction : {drop_all, drop_one, drop_two, drop_all_and_put}) {
            compare_with_model(capacity, reaction);
        }
    }
}

TEST(RingBuffer, takesALengthOrAText) {
    ERCirBuf ring(8);
    ring.Put("", 0);
    EXPECT_EQ(ring.GetNbChar(), 0);
    ring.Put("A\0B", 2);
    ring.Put("CD", -1);
    EXPECT_EQ(contents(ring), std::string("A\0CD", 4));
    ring.Put("EFGH", 0);
    EXPECT_EQ(contents(ring), "H");
}

TEST(RingBuffer, hasNoCharacterOutsideWhatItHolds) {
    ERCirBuf ring(4);
    EXPECT_EQ(ring.Get(), ERCirBuf::no_character);
    ring.Put("AB", 2);
    for (const int position : {2, 3, -1, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(ring[position], ERCirBuf::no_character) << position;
    }
    EXPECT_EQ(ring.GetNbChar(), 2);
}

} // namespace
