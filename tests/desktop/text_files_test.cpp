#include "desktop/TextFiles.h"
#include "platform/files/file.h"
#include "platform/files/file_exceptions.h"
#include "tests/support/child_process.h"
#include "tests/support/eventually.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

struct TextFiles : testing::Test {
    TextFiles() { ::close(::mkstemp(path.data())); }

    ~TextFiles() override { std::filesystem::remove(path); }

    std::string path = std::filesystem::temp_directory_path() / "measured-XXXXXX";
};

TEST(Lines, AreSplitIntoFields) {
    CStringArray fields;
    EXPECT_EQ(SplitLine("a,,b,", fields, ','), 4);
    EXPECT_STREQ(fields[2], "b");
    EXPECT_STREQ(fields[3], "");
    EXPECT_EQ(SplitLine("", fields, ','), 1);
}

TEST_F(TextFiles, AreReadyWhenNobodyWritesThem) {
    EXPECT_EQ(WaitForFile((path + "-not").c_str(), 0), 0);
    // Also for who may have no lease on the file and looks at the processes that he may look at.
    ::chmod(path.c_str(), 0666);
    const auto other_process_writes = [this] {
        ::prctl(PR_SET_DUMPABLE, 1); // as if nobody had started it
        const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
        const pid_t writer = support::start_child([] { ::pause(); });
        ::close(file);
        EXPECT_EQ(WaitForFile(path.c_str(), 40), 0);
        ::kill(writer, SIGKILL);
        EXPECT_EQ(WaitForFile(path.c_str(), 60'000), 1);
        support::ended_well(writer);
    };
    other_process_writes();
    support::as_nobody(other_process_writes);

    std::atomic<bool> stop = false; // and where there is nothing to be seen, at the file
    const int file = ::open(path.c_str(), O_WRONLY);
    std::thread writer([&] {
        while (!stop) {
            EXPECT_EQ(::write(file, "x", 1), 1);
        }
    });
    EXPECT_TRUE(support::eventually([&] { return std::filesystem::file_size(path) > 0; }));
    support::as_nobody([&] {
        ::close(file); // a child has it, too
        EXPECT_EQ(WaitForFile(path.c_str(), 0), 0);
    });
    stop = true;
    writer.join();
    ::close(file);
    support::as_nobody([this] { EXPECT_EQ(WaitForFile(path.c_str(), 60'000), 1); });
}

TEST_F(TextFiles, AreNotWrittenHereWhileThatIsDenied) {
    CFile writer;
    CFile reader;
    CFileException error;
    ASSERT_TRUE(writer.Open(path.c_str(), CFile::modeWrite));
    writer.Write("1.25", 4);
    EXPECT_FALSE(reader.Open(path.c_str(), CFile::shareDenyWrite, &error));
    EXPECT_EQ(error.m_lOsError, 32);
    writer.Close();
    ASSERT_TRUE(reader.Open(path.c_str(), CFile::shareDenyWrite));
    EXPECT_FALSE(writer.Open(path.c_str(), CFile::modeCreate | CFile::modeWrite));
    EXPECT_EQ(std::filesystem::file_size(path), 4U);
    reader.Abort();
    EXPECT_TRUE(writer.Open(path.c_str(), CFile::modeCreate | CFile::modeWrite));
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

} // namespace
