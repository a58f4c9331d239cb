// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/LockFile.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "timesettings/TimeSettingsError.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{

class LockFileTest : public SystemTest
{
protected:
    static constexpr const char* path = "/var/test.lock";

    // Whether another process could take the lock now.
    bool isFree()
    {
        const int other = open(sandbox.path(path).c_str(), O_RDWR | O_CLOEXEC);
        const bool taken = flock(other, LOCK_EX | LOCK_NB) == 0;
        ::close(other);
        return taken;
    }

    // The text of the error that `step` throws.
    template<typename Step>
    static std::string errorOf(Step step)
    {
        try {
            step();
        } catch (const TimeSettingsError& error) {
            return error.what();
        }
        return "no error";
    }

    LockFile file;
};

TEST_F(LockFileTest, OpenCreatesTheFileReadableForAllAndWritableForItsOwner)
{
    file.open(path);
    EXPECT_EQ(callsTo("open"), Texts{"/var/test.lock O_RDWR|O_CREAT|O_CLOEXEC 0644"});
    EXPECT_TRUE(sandbox.exists(path));
}

TEST_F(LockFileTest, OpenKeepsWhatIsInTheFile)
{
    sandbox.write(path, "text");
    file.open(path);
    EXPECT_EQ(sandbox.read(path), "text");
}

TEST_F(LockFileTest, OpenTellsWhyItFails)
{
    failNext("open", EACCES);
    EXPECT_EQ(errorOf([&] { file.open(path); }), errorText("open() FAILED: ", EACCES));
}

TEST_F(LockFileTest, LockKeepsOthersOut)
{
    file.open(path);
    file.lock();
    EXPECT_FALSE(isFree());
}

TEST_F(LockFileTest, LockWaitsForAsLongAsItTakes)
{
    file.open(path);
    file.lock();
    EXPECT_EQ(callsTo("flock"), Texts{"LOCK_EX"}); // and not LOCK_NB
}

TEST_F(LockFileTest, LockTellsWhyItFails)
{
    file.open(path);
    failNext("flock", ENOLCK);
    EXPECT_EQ(errorOf([&] { file.lock(); }), errorText("flock() FAILED: ", ENOLCK));
}

TEST_F(LockFileTest, UnlockLetsOthersIn)
{
    file.open(path);
    file.lock();
    file.unlock();
    EXPECT_TRUE(isFree());
}

TEST_F(LockFileTest, UnlockTellsWhyItFails)
{
    file.open(path);
    file.lock();
    failNext("flock", EINTR);
    EXPECT_EQ(errorOf([&] { file.unlock(); }), errorText("flock() FAILED: ", EINTR));
}

TEST_F(LockFileTest, CloseLeavesTheFileWhereItIs)
{
    file.open(path);
    file.close();
    EXPECT_TRUE(sandbox.exists(path));
}

TEST_F(LockFileTest, CloseTellsWhyItFails)
{
    file.open(path);
    failNext("close", EIO);
    EXPECT_EQ(errorOf([&] { file.close(); }), errorText("close() FAILED: ", EIO));
}

TEST_F(LockFileTest, ADescriptorThatCouldNotBeClosedIsNotClosedAgain)
{
    {
        LockFile other;
        other.open(path);
        failNext("close", EIO);
        errorOf([&] { other.close(); });
    }
    EXPECT_EQ(callsTo("close").size(), 1U);
}

TEST_F(LockFileTest, TheEndOfTheObjectDropsTheLock)
{
    {
        LockFile other;
        other.open(path);
        other.lock();
    }
    EXPECT_TRUE(isFree());
    EXPECT_EQ(callsTo("close").size(), 1U);
}

TEST_F(LockFileTest, TheEndOfTheObjectLogsThatItCouldNotClose)
{
    {
        LockFile other;
        other.open(path);
        failNext("close", EIO);
    }
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{4, errorText("close() FAILED: ", EIO)}}));
}

TEST_F(LockFileTest, AFileThatWasNeverOpenedIsNotClosed)
{
    {
        const LockFile other;
    }
    EXPECT_TRUE(callsTo("close").empty());
}

} // namespace
