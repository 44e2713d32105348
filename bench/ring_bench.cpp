// What the character ring costs against a plain one: blocks of received characters go in, and
// come out one by one.

#include "bench/report.h"
#include "serial/RingBuffer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int slots = 1024;

// The same work by hand: no virtual function, and a capacity that the compiler knows.
class PlainRing {
  public:
    void Put(const char* data, int length) {
        while (length > 0) {
            if (count_ == slots - 1) {
                write_ = read_ = count_ = 0;
            }
            const int run = std::min({length, slots - 1 - count_, slots - write_});
            std::memcpy(storage_ + write_, data, static_cast<std::size_t>(run));
            write_ = (write_ + run) & (slots - 1);
            count_ += run;
            data += run;
            length -= run;
        }
    }

    char Get() {
        if (count_ == 0) {
            return '\xFF';
        }
        const char c = storage_[read_];
        read_ = (read_ + 1) & (slots - 1);
        --count_;
        return c;
    }

  private:
    char storage_[slots];
    int write_ = 0;
    int read_ = 0;
    int count_ = 0;
};

// Characters a second through `ring`, in blocks of `length`.
template <typename Ring>
double throughput(Ring& ring, int length) {
    constexpr int total = 4'000'000;
    const std::vector<char> block(static_cast<std::size_t>(length), '7');
    unsigned sum = 0;
    const double time = bench::seconds([&] {
        for (int done = 0; done < total; done += length) {
            ring.Put(block.data(), length);
            for (int taken = 0; taken < length; ++taken) {
                sum += static_cast<unsigned char>(ring.Get());
            }
        }
    });
    const unsigned blocks =
        (total + static_cast<unsigned>(length) - 1) / static_cast<unsigned>(length);
    if (sum != blocks * static_cast<unsigned>(length) * '7') {
        std::fputs("the ring lost characters\n", stderr);
        std::exit(1);
    }
    return total / time;
}

} // namespace

int main() {
    ERCirBuf ring(slots);
    PlainRing plain;
    for (const int length : {1, 16, 128, 1023}) {
        const auto comparison = bench::compare([&] { return throughput(ring, length); },
                                               [&] { return throughput(plain, length); });
        bench::report("e.ring." + std::to_string(length), comparison, "bytes/s");
    }
}
