// Any bytes from a peer: the same texts, in whatever pieces they come.

#include "net/TextData.h"
#include "platform/files/archive.h"
#include "platform/files/file.h"
#include "platform/files/file_exceptions.h"

#include <algorithm>
#include <cstdlib>

namespace {

/// A connection on which one read brings `piece` bytes at most.
struct Pieces : CFile {
    UINT Read(void* buffer, UINT count) override {
        const auto got =
            bytes.copy(static_cast<char*>(buffer), std::min<std::size_t>(count, piece));
        bytes.remove_prefix(got);
        return static_cast<UINT>(got);
    }

    std::string_view bytes;
    std::size_t piece = 1;
};

/// What is received, each text between bars.
std::string texts_of(std::string_view bytes, std::size_t piece, CSocketDataStringFormat& format) {
    std::string texts;
    CSocketDataString text(format);
    Pieces file;
    file.bytes = bytes, file.piece = piece;
    CArchive archive(&file, CArchive::load, 128);
    try {
        for (;;) {
            if (text.Serialise(archive)) {
                const CString got = text.GetString();
                texts.append(got, static_cast<std::size_t>(got.GetLength())) += '|';
            }
        }
    } catch (CArchiveException* ended) {
        ended->Delete();
        return texts;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static constexpr const char* ends[] = {"", ";", "\r\n", "aab"};
    if (size > 1) {
        const std::string bytes(data + 2, data + size), end = ends[data[0] % 4];
        CSocketDataStringFormat format;
        format.SetReceivedStringTerminator(end.c_str());
        format.SetOptionalReceiveTerminators(data[0] & 4);
        const std::string texts = texts_of(bytes, data[1] + 1U, format);
        const bool left = !(data[0] & 4) && texts.find(end.empty() ? "\n" : end) != texts.npos;
        if (left || texts != texts_of(bytes, 1, format)) {
            std::abort();
        }
    }
    return 0;
}
