// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Upload.h"

#include "client/engine/InterruptSource.h"
#include "support/SystemTest.h"
#include "support/VirtualTime.h"
#include "unit/client/card/CardInLoop.h"
#include "unit/client/card/RecordingObserver.h"

#include <csignal>
#include <unistd.h>

namespace
{

constexpr std::size_t headSize = 24; // of the message, and the count of its section

class UploadTest : public SystemTest
{
protected:
    UploadTest()
    {
        loop.setInterruptDescriptor(interrupts.descriptor());
        isSmall();
    }

    // What is sent before anybody takes a part of it.
    void isSmall()
    {
        sandbox.write("/tmp/archive", "an archive");
        holdArchive();
    }

    // More than any buffer on the way takes.
    void isLarge()
    {
        const int room = 65536;
        ::setsockopt(card.listener.descriptor(), SOL_SOCKET, SO_RCVBUF, &room, sizeof room);
        ASSERT_EQ(::truncate(path.c_str(), 256L << 20), 0);
        holdArchive();
    }

    void holdArchive()
    {
        archive.path = "archive";
        archive.file = HeldFile(path);
        archive.size = archive.file.size();
    }

    Upload& uploading(CommandId command = CommandId::firmwareUpload, Network* over = nullptr)
    {
        return upload.emplace(over != nullptr ? *over : network, observer, archive, command, patience);
    }

    [[nodiscard]] std::size_t wholeSize() const { return headSize + static_cast<std::size_t>(archive.size); }

    // What the card does; it keeps the connection open unless it is said otherwise.
    Task<void> takeAndAnswer(std::size_t size, Status status)
    {
        co_await card.accept();
        co_await card.take(size);
        card.answer(status);
    }
    Task<void> takeAndBeInterrupted(std::size_t size)
    {
        co_await card.accept();
        co_await card.take(size);
        loop.interrupt();
    }
    Task<void> takeAndHangUp(std::size_t size)
    {
        co_await card.accept();
        co_await card.take(size);
        card.hangUp();
    }
    Task<void> takeAndKeepSilent(std::size_t size)
    {
        co_await card.accept();
        co_await card.take(size);
    }
    Task<void> takeWhileTheFileGrows()
    {
        co_await card.accept();
        co_await card.take(headSize);
        EXPECT_EQ(::truncate(path.c_str(), (256L << 20) + 1), 0);
        co_await card.take(wholeSize());
    }

    // Not before: how long the kernel takes to connect is nothing that the clock of a test may decide.
    void stopTheClockWith(std::string_view phase)
    {
        observer.onPhase = [this, phase](std::string_view told) {
            if (told == phase && !time) {
                time.emplace();
            }
        };
    }

    Failure sendTo(Task<void> cards) { return card.beside(std::move(cards), upload->send(card.endpoint)); }

    const std::string path = sandbox.path("/tmp/archive");
    const Seconds patience{60};
    InterruptSource interrupts;
    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {}}};
    CardInLoop card{loop};
    RecordingObserver observer;
    Archive archive;
    std::optional<Upload> upload;
    std::optional<VirtualTime> time;
};

TEST_F(UploadTest, EndsWhenTheCardHasSaidSuccess)
{
    uploading();
    EXPECT_FALSE(upload->hasBegun());
    EXPECT_EQ(sendTo(takeAndAnswer(wholeSize(), Status::success)).code, ExitCode::ok);
    EXPECT_TRUE(upload->hasBegun());
    EXPECT_TRUE(upload->isWhole());
    EXPECT_GT(upload->rate(), 0);
    EXPECT_EQ(observer.phases, (Texts{"sending", "unpacking"}));
    EXPECT_EQ(observer.lastPercent, 100);
    EXPECT_TRUE(observer.warnings.empty());
}

TEST_F(UploadTest, SendsTheArchiveAsOneSectionOfItsSize)
{
    uploading();
    sendTo(takeAndAnswer(wholeSize(), Status::success));
    std::string said;
    for (const std::byte one : std::span(card.came).subspan(headerSize)) {
        said += static_cast<char>(one);
    }
    EXPECT_EQ(said, std::string("\x0a\0\0\0", 4) + "an archive");
    EXPECT_EQ(card.came.at(8), std::byte{7}); // the command
    EXPECT_EQ(card.came.at(16), std::byte{14});
}

TEST_F(UploadTest, ContactsNobodyInADryRun)
{
    Network dry(loop, NetworkOptions{.policy = {}, .interfaces = {}, .dryRun = DryRun::changes});
    uploading(CommandId::firmwareUpgrade, &dry);
    EXPECT_THROW(loop.run(upload->send(card.endpoint)), NotSent);
    EXPECT_FALSE(upload->hasBegun());
    EXPECT_FALSE(card.listener.wasContacted());
}

TEST_F(UploadTest, ContactsNobodyWithAFileThatHasChanged)
{
    sandbox.write("/tmp/archive", "another archive");
    uploading();
    const Failure failure = failureOf([&] { loop.run(upload->send(card.endpoint)); });
    EXPECT_EQ(failure.code, ExitCode::badFile);
    EXPECT_EQ(failure.hint, "archive has changed since it was checked, or became unreadable");
    EXPECT_FALSE(upload->hasBegun());
    EXPECT_FALSE(card.listener.wasContacted());
}

TEST_F(UploadTest, EndsWithinAFileThatChanges)
{
    isLarge();
    uploading();
    EXPECT_EQ(sendTo(takeWhileTheFileGrows()).category, Category::badArchive);
    EXPECT_TRUE(upload->hasBegun());
    EXPECT_FALSE(upload->isWhole());
    EXPECT_LT(card.came.size(), wholeSize());
}

TEST_F(UploadTest, HasNotBegunWhereNoConnectionIsTaken)
{
    card.listener.close();
    uploading();
    const Failure failure = failureOf([&] { loop.run(upload->send(card.endpoint)); });
    EXPECT_EQ(failure.category, Category::refused);
    EXPECT_EQ(failure.phase, "connecting");
    EXPECT_FALSE(upload->hasBegun());
}

TEST_F(UploadTest, TellsTheAnswerOfACardThatTakesNoMore)
{
    isLarge();
    uploading();
    const Failure failure = sendTo(takeAndAnswer(headSize, Status::failure));
    EXPECT_EQ(failure.category, Category::refusedByCard);
    EXPECT_EQ(failure.phase, "sending the archive");
    EXPECT_FALSE(upload->isWhole());
}

TEST_F(UploadTest, BelievesNoSuccessBeforeTheCardHasItAll)
{
    isLarge();
    uploading();
    const Failure failure = sendTo(takeAndAnswer(headSize, Status::success));
    EXPECT_EQ(failure.category, Category::garbage);
    EXPECT_TRUE(failure.hint.starts_with("success was said before the whole archive was there")) << failure.hint;
}

TEST_F(UploadTest, TellsARefusalOfTheWholeArchive)
{
    uploading();
    const Failure failure = sendTo(takeAndAnswer(wholeSize(), Status::failure));
    EXPECT_EQ(failure.category, Category::refusedByCard);
    EXPECT_EQ(failure.phase, "waiting for the card to unpack");
}

TEST_F(UploadTest, IsWholeIfTheCardHangsUpBehindIt)
{
    uploading();
    EXPECT_EQ(sendTo(takeAndHangUp(wholeSize())).category, Category::closed);
    EXPECT_TRUE(upload->isWhole());
}

TEST_F(UploadTest, IsNotWholeIfTheCardHangsUpWithin)
{
    isLarge();
    uploading();
    const Failure failure = sendTo(takeAndHangUp(headSize));
    EXPECT_EQ(failure.category, Category::closed);
    EXPECT_EQ(failure.phase, "sending the archive");
    EXPECT_TRUE(upload->hasBegun());
    EXPECT_FALSE(upload->isWhole());
}

TEST_F(UploadTest, GivesUpACardThatTakesNothingWhenItsPatienceIsOver)
{
    isLarge();
    uploading();
    stopTheClockWith("sending");
    const Failure failure = sendTo(takeAndKeepSilent(0));
    EXPECT_EQ(failure.code, ExitCode::noAnswer);
    EXPECT_EQ(failure.category, Category::stalled);
    EXPECT_EQ(failure.phase, "sending the archive");
    EXPECT_EQ(failure.hint, "no sign of progress for 60 s; the card may still be at work");
    ASSERT_EQ(observer.warnings.size(), 1U); // once, long before
    EXPECT_TRUE(observer.warnings.front().starts_with("the transfer stalls: ")) << observer.warnings.front();
}

TEST_F(UploadTest, GivesUpACardThatDoesNotConfirmWhenItsPatienceIsOver)
{
    uploading();
    stopTheClockWith("unpacking");
    const Failure failure = sendTo(takeAndKeepSilent(wholeSize()));
    EXPECT_EQ(failure.category, Category::stalled);
    EXPECT_EQ(failure.phase, "waiting for the card to unpack");
    EXPECT_TRUE(upload->isWhole());
    EXPECT_GE(Seconds(time.value().passed()), patience);
}

TEST_F(UploadTest, TellsInWhichStateAnInterruptionLeavesTheCard)
{
    isLarge();
    uploading(CommandId::firmwareUpgrade);
    const Failure within = sendTo(takeAndBeInterrupted(headSize));
    EXPECT_EQ(within.code, ExitCode::interrupted);
    EXPECT_EQ(within.phase, "sending the archive");
    EXPECT_TRUE(within.hint.starts_with("not the whole archive was sent, so that nothing is installed")) << within.hint;
    isSmall();
    uploading(CommandId::firmwareUpgrade);
    const Failure upgrade = sendTo(takeAndBeInterrupted(wholeSize()));
    EXPECT_EQ(upgrade.phase, "waiting for the card to unpack");
    EXPECT_EQ(upgrade.hint, "the whole archive was sent: the card may unpack and install it all the same");
    uploading(CommandId::firmwareUpload);
    EXPECT_EQ(sendTo(takeAndBeInterrupted(wholeSize())).hint,
              "the whole archive was sent: the card may unpack it all the same, and installs nothing");
}

TEST_F(UploadTest, TellsThatAnInterruptionBeforeItLeavesTheCardAsItWas)
{
    card.listener.fillQueue();
    uploading();
    std::raise(SIGINT); // to be noticed with the first wait
    const Failure failure = failureOf([&] { loop.run(upload->send(card.endpoint)); });
    EXPECT_EQ(failure.code, ExitCode::interrupted);
    EXPECT_EQ(failure.hint, "nothing was sent; the card is as it was");
}

} // namespace
