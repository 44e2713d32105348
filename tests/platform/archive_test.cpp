#include "platform/files/archive.h"
#include "platform/files/file.h"
#include "platform/files/file_exceptions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <string>
#include <vector>

namespace {

/// Gives `contents` in pieces of at most `piece` bytes, as a connection does, and keeps what is
/// written unless it is full; notes what it is asked for.
struct Stream final : CFile {
    explicit Stream(std::string given = {}, UINT most = 1)
        : contents(std::move(given)), piece(most) {}

    UINT Read(void* buffer, UINT count) override {
        asked.push_back(count);
        const auto got = contents.copy(static_cast<char*>(buffer), std::min(count, piece));
        contents.erase(0, got);
        return static_cast<UINT>(got);
    }

    void Write(const void* buffer, UINT count) override {
        if (full) {
            AfxThrowFileException(CFileException::diskFull);
        }
        contents.append(static_cast<const char*>(buffer), count);
    }

    std::int64_t Seek(std::int64_t, UINT) override { AfxThrowNotSupportedException(); }

    bool gives_what_has_come() const override { return true; }

    std::string contents;
    UINT piece;
    bool full = false;
    std::vector<UINT> asked;
};

std::string some_bytes(std::size_t count) {
    std::string bytes(count, 0);
    std::iota(bytes.begin(), bytes.end(), char{1});
    return bytes;
}

/// The cause of the exception that `call` throws, -1 for none, -2 for what is not supported.
template <typename Call>
int cause_of(Call call) {
    int cause = -1;
    try {
        call();
    } catch (CException* thrown) {
        const auto* const archive = dynamic_cast<CArchiveException*>(thrown);
        const auto* const file = dynamic_cast<CFileException*>(thrown);
        cause = archive ? archive->m_cause : file ? file->m_cause : -2;
        thrown->Delete();
    }
    return cause;
}

TEST(Archive, AsksAStreamForNoMoreThanIsNeededUnlessInBulk) {
    Stream stream(some_bytes(700), 3);
    CArchive archive(&stream, CArchive::load, 10);
    BYTE byte = 0;
    DWORD word = 0;
    archive >> byte >> word;
    EXPECT_EQ(word, 0x05040302U);
    EXPECT_EQ(stream.asked, (std::vector<UINT>{1, 4, 1}));
    archive.EnableBulkRead();
    stream.piece = 1000;
    archive >> byte;
    EXPECT_EQ(stream.asked.back(), 128U); // the least buffer
    EXPECT_FALSE(archive.IsBufferEmpty());
    std::string rest(700 - 135, 0);
    EXPECT_EQ(archive.Read(rest.data(), 125), 125U);
    archive >> word; // of which two bytes lie at the end of the buffer
    EXPECT_EQ(word, 0x87868584U);
    EXPECT_EQ(archive.Read(rest.data(), 700), rest.size());
    EXPECT_EQ(rest, some_bytes(700).substr(135));
    EXPECT_TRUE(archive.IsBufferEmpty());
    EXPECT_EQ(stream.asked[5], 512U); // whole buffers go straight to the reader
    EXPECT_EQ(cause_of([&] { archive >> byte; }), CArchiveException::endOfFile);
}

TEST(Archive, CarriesBlocksOfAllSizesThroughPiecesOfAllSizes) {
    for (const UINT size : {0U, 1U, 127U, 128U, 129U, 255U, 256U, 300U, 4097U}) {
        for (const UINT piece : {1U, 100U, 128U, 5000U}) {
            Stream stream({}, piece);
            const std::string sent = some_bytes(2 * size + 5);
            {
                CArchive archive(&stream, CArchive::store, 128);
                archive.Write(sent.data(), 5);
                archive.Write(sent.data() + 5, size);
                archive.Write(sent.data() + 5 + size, size);
            }
            EXPECT_EQ(stream.contents, sent);
            CArchive archive(&stream, CArchive::load, 128);
            std::string received(sent.size() + 9, 0);
            EXPECT_EQ(archive.Read(received.data(), 5), 5U);
            EXPECT_EQ(archive.Read(received.data() + 5, size), size);
            EXPECT_EQ(archive.Read(received.data() + 5 + size, size + 9), size); // the end
            EXPECT_EQ(received.substr(0, sent.size()), sent);
        }
    }
}

TEST(Archive, KeepsToItsDirectionAndTellsWhatCannotBeWritten) {
    Stream stream(some_bytes(3), 100);
    CArchive loading(&stream, CArchive::load), storing(&stream, CArchive::store);
    loading.EnableBulkRead();
    BYTE byte = 0;
    DWORD word = 0;
    EXPECT_EQ(cause_of([&] { loading.Write("", 1); }), CArchiveException::readOnly);
    EXPECT_EQ(cause_of([&] { storing >> byte; }), CArchiveException::writeOnly);
    EXPECT_EQ(cause_of([&] { storing.Read(&byte, 1); }), CArchiveException::writeOnly);
    EXPECT_FALSE(storing.IsBufferEmpty());
    EXPECT_EQ(cause_of([&] { loading >> word; }), CArchiveException::endOfFile);
    EXPECT_EQ(cause_of([&] { loading.Close(); }), -2); // a stream cannot go back over unread bytes
    EXPECT_EQ(loading.Read(&word, 9), 3U);
    loading.Close();
    EXPECT_EQ(loading.GetFile(), nullptr);
    EXPECT_EQ(cause_of([&] { loading >> byte; }), CArchiveException::endOfFile);

    storing.Write("kept", 4);
    stream.full = true;
    EXPECT_EQ(cause_of([&] { storing.Close(); }), CFileException::diskFull);
    stream.full = false;
    storing.Flush();
    storing.Write("dropped", 7);
    storing.Abort();
    EXPECT_EQ(cause_of([&] { storing.Write("", 1); }), CArchiveException::genericException);
    EXPECT_EQ(stream.contents, "kept");

    stream.full = true;
    for (const bool thrown_before : {false, true}) {
        EXPECT_EQ(cause_of([&] {
                      CArchive archive(&stream, CArchive::store);
                      archive.Write("", 1);
                      if (thrown_before) {
                          AfxThrowNotSupportedException();
                      }
                  }),
                  thrown_before ? -2 : CFileException::diskFull);
    }
}

TEST(File, IsPutBackToWhereTheArchiveStoppedReading) {
    const auto path = std::filesystem::temp_directory_path() / "tarnel-archive-test";
    CFile file;
    CFileException error;
    EXPECT_FALSE(file.Open((path / "no").c_str(), CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_TRUE(file.Open(path.c_str(), CFile::modeCreate | CFile::modeReadWrite));
    file.Write(some_bytes(1000).data(), 1000);
    EXPECT_EQ(file.Seek(-999, CFile::end), 1);
    char next = 0;
    DWORD word = 0;
    CArchive(&file, CArchive::load) >> word;
    EXPECT_EQ(file.Read(&next, 1), 1U);
    EXPECT_EQ(next, 6);
    file.Close();
    EXPECT_EQ(cause_of([&] { file.Read(&next, 1); }), CFileException::genericException);
    std::filesystem::remove(path);
}

} // namespace
