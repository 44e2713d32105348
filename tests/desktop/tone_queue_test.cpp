#include "desktop/ToneQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view letters = "SCRA";

/// The queue after these requests, in which a tone's frequency is its place in the row; "-" plays
/// the front one to its end.
std::string after(const std::string& requests) {
    tarnel::ToneQueue queue;
    int place = 0;
    for (const char letter : requests) {
        if (letter == '-') {
            queue.requests.pop_front();
        } else {
            const auto type = letters.find(letter);
            queue.accept(++place, 100,
                         static_cast<WOD_PLAY_SOUND_TYPE>(std::min<std::size_t>(type, 7)));
        }
    }
    std::string row;
    for (const tarnel::ToneRequest& tone : queue.requests) {
        row += tone.type < 4 ? letters[static_cast<std::size_t>(tone.type)] : '?';
        row += std::to_string(tone.frequency);
    }
    return row;
}

TEST(ToneQueue, letsTonesJoinReplaceOrGo) {
    const struct {
        std::string requests; // start, continue, replaceable, auto
        std::string queue;
    } cases[] = {
        {"SCC", "S1C2C3"},   // a sequence
        {"S-C", "C2"},       // continued after its first tone has gone
        {"S-CC", "C2C3"},    // and still open
        {"C", "C1"},         // without a sequence, when nothing waits
        {"CC", "C1"},        // but not behind another tone
        {"SS", "S1"},        // a beginning waits for nobody,
        {"SSC", "S1"},       // and closes the sequence that it met
        {"SCCRC", "S1C2C3"}, // as a replaceable tone does
        {"R-S-C", "C3"},     //
        {"RR", "R2"},        // the second replaces the first,
        {"RRR", "R3"},       //
        {"RS", "S2"},        // and so does a beginning, which opens a sequence
        {"RSC", "S2C3"},     //
        {"RC", "R1"},        // there is no sequence to continue
        {"CR", "C1"},        // the last one is not replaceable
        {"A", "S1"},         // what is automatic begins,
        {"AAA", "S1C2C3"},   // goes on,
        {"RAA", "S2C3"},     // replaces,
        {"SRA", "S1"},       // and is dropped where it would have to go on with nothing
        {"?", "?1"},         // an unknown type joins only where nothing waits
        {"S?", "S1"},        //
    };

    for (const auto& [requests, queue] : cases) {
        EXPECT_EQ(after(requests), queue) << requests;
    }
}

TEST(ToneQueue, takesNoToneWithoutLengthOrPitch) {
    tarnel::ToneQueue queue;
    queue.accept(1000, 100, WOD_PLAY_SOUND_REPLACEABLE);
    for (const int nothing : {0, -1}) {
        EXPECT_FALSE(queue.accept(1000, nothing, WOD_PLAY_SOUND_REPLACEABLE));
        EXPECT_FALSE(queue.accept(nothing, 100, WOD_PLAY_SOUND_START));
    }
    EXPECT_EQ(queue.requests.size(), 1U);
    EXPECT_EQ(queue.requests.back().type, WOD_PLAY_SOUND_REPLACEABLE);
}

} // namespace
