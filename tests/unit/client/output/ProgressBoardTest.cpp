// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/output/ProgressBoard.h"

#include <gtest/gtest.h>

namespace
{

class ProgressBoardTest : public testing::Test
{
protected:
    static ProgressBoard::Moment at(int seconds) { return ProgressBoard::Moment(std::chrono::seconds(seconds)); }

    ProgressBoard board;
};

TEST_F(ProgressBoardTest, SaysNothingIfNothingIsAtWork)
{
    EXPECT_EQ(board.text(at(0)), "");
    board.tell("card1", {"sending"}, at(0));
    board.finish("card1");
    EXPECT_EQ(board.text(at(0)), "");
}

TEST_F(ProgressBoardTest, TellsWhatASingleJobDoes)
{
    board.tell("card1", {"sending", "3.1 of 12.4 MiB", 25}, at(10));
    EXPECT_EQ(board.text(at(12)), "card1: sending 2 s, 3.1 of 12.4 MiB");
    board.tell("card1", {"sending", "12.4 of 12.4 MiB", 100}, at(13));
    EXPECT_EQ(board.text(at(13)), "card1: sending 3 s, 12.4 of 12.4 MiB");
    board.tell("card1", {"unpacking"}, at(14));
    EXPECT_EQ(board.text(at(19)), "card1: unpacking 5 s");
}

TEST_F(ProgressBoardTest, TellsTheSlowestOfSeveral)
{
    board.expect(8);
    board.tell("card1", {"sending", {}, 80}, at(0));
    board.tell("card7", {"sending", {}, 62}, at(0));
    board.tell("card8", {"unpacking", {}, 100}, at(0));
    for (const char* one : {"card2", "card3", "card4"}) {
        board.tell(one, {"sending", {}, 1}, at(0));
        board.finish(one);
    }
    EXPECT_EQ(board.text(at(4)), "3 of 8 done, slowest card7 62 %, sending 4 s");
}

TEST_F(ProgressBoardTest, TakesWhatHasNotBegunForSlowest)
{
    board.expect(2);
    board.tell("card1", {"sending", {}, 1}, at(0));
    board.tell("card2", {"looking for the card"}, at(0));
    EXPECT_EQ(board.text(at(1)), "0 of 2 done, slowest card2, looking for the card 1 s");
}

TEST_F(ProgressBoardTest, DoesNotCountWhatIsForgotten)
{
    board.tell("", {"looking for the cards"}, at(0));
    EXPECT_EQ(board.text(at(1)), "looking for the cards 1 s");
    board.forget("");
    board.expect(2);
    board.tell("card1", {"sending"}, at(0));
    EXPECT_EQ(board.text(at(0)).substr(0, 10), "0 of 2 don");
}

} // namespace
