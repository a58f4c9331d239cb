// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Discovery.h"

#include "ProgramFixture.h"

#include "client/engine/EventLoop.h"
#include "client/wire/Network.h"
#include "support/VirtualTime.h"

#include <cstdint>

namespace
{

using Milliseconds = std::vector<std::int64_t>;

class DiscoveryTest : public ProgramFixture
{
protected:
    // When each datagram was sent, and when nobody listened any more.
    Milliseconds timesOf(const NetworkOptions& options)
    {
        const VirtualTime time;
        Network network(loop, options);
        Discovery discovery(network, [](const FoundCard&) {});
        Task<void> running = discovery.run(0);
        running.start();
        Milliseconds times;
        const auto note = [&] {
            const std::int64_t now = std::chrono::duration_cast<std::chrono::milliseconds>(time.passed()).count();
            times.resize(callsTo("sendto").size(), now);
            return now;
        };
        while (!running.done()) {
            note();
            loop.run(aMillisecond());
        }
        times.push_back(note());
        return times;
    }

private:
    Task<void> aMillisecond() { co_await loop.until(after(Seconds(0.001))); }

    EventLoop loop;
};

TEST_F(DiscoveryTest, SendsBothProbesThreeTimesAndListens)
{
    EXPECT_EQ(timesOf({.policy = {}, .interfaces = {"lo"}}), (Milliseconds{0, 0, 300, 300, 900, 900, 1200}));
}

TEST_F(DiscoveryTest, ListensForAsLongAsTheUserSays)
{
    EXPECT_EQ(timesOf({.policy = {Seconds(6)}, .interfaces = {"lo"}, .timeoutGiven = true}),
              (Milliseconds{0, 0, 1500, 1500, 4500, 4500, 6000}));
}

} // namespace
