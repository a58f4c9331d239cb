// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/IpConfigSet.h"
#include "support/SystemTest.h"
#include "unit/services/IpConfigSamples.h"
#include "unit/services/NoXmlMemory.h"
#include "util/Hardened.h"

#include <syslog.h>

namespace
{

class ConfigureInterfacesTest : public SystemTest
{
protected:
    ConfigureInterfacesTest()
    {
        sandbox.makeDirectory("/var");
        uci.set(firstProto, "static");
        uci.set(secondProto, "dhcp");
    }

    void expectSuccess(const std::string& content, const std::vector<std::string>& staged)
    {
        EXPECT_EQ(configureInterfaces(content), 0);
        EXPECT_EQ(shell.commands(), joined({staged, readBack, commit}));
    }

    void expectFailure(const std::string& content, const std::vector<std::string>& staged)
    {
        CapturedOutput output;
        EXPECT_EQ(configureInterfaces(content), -1);
        EXPECT_EQ(shell.commands(), joined({staged, readBack, revert}));
    }
};

} // namespace

TEST_F(ConfigureInterfacesTest, StagesBothInterfacesAndCommitsAll)
{
    expectSuccess(configuration(one + two), joined({stageFirst, stageSecond}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ConfigureInterfacesTest, LeavesAMarkerWhileSettingsAreStagedInTheHardenedBuildOnly)
{
    expectSuccess(configuration(one + two), joined({stageFirst, stageSecond}));
    const Texts order = orderOf({"fopen", "system", "remove"});
    EXPECT_EQ(order.front() == "fopen: /var/tarveld.staging we", hardened);
    EXPECT_EQ(order.back() == "remove: /var/tarveld.staging", hardened);
}

TEST_F(ConfigureInterfacesTest, StagesOneInterfaceAndLogsTheEndOfTheRoot)
{
    expectSuccess(configuration(one), stageFirst);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "Wrong node name: IpConfiguration"}}));
}

TEST_F(ConfigureInterfacesTest, SkipsBlanksBeforeTheFirstInterface)
{
    expectSuccess(configuration("\n  " + one + two), joined({stageFirst, stageSecond}));
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong node name: #text"}));
}

TEST_F(ConfigureInterfacesTest, SkipsNodesBeforeTheRoot)
{
    expectSuccess("<!-- first -->" + configuration(one + two), joined({stageFirst, stageSecond}));
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong node name: #comment"}));
}

TEST_F(ConfigureInterfacesTest, SucceedsWithoutAnyInterface)
{
    expectSuccess("<IpConfiguration From=\"mgmt\" To=\"card7\"/>", {});
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ConfigureInterfacesTest, SucceedsWithAnotherRoot)
{
    expectSuccess("<RebootCard From=\"mgmt\" To=\"card7\"/>", {});
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong node name: RebootCard"}));
}

TEST_F(ConfigureInterfacesTest, FailsWithBlanksBehindTheFirstInterface)
{
    expectFailure(configuration(one + "\n" + two), stageFirst);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>(2, "Wrong node name: #text")));
}

TEST_F(ConfigureInterfacesTest, FailsWithBlanksBehindTheSecondInterface)
{
    expectFailure(configuration(one + two + "\n"), joined({stageFirst, stageSecond}));
}

TEST_F(ConfigureInterfacesTest, FailsWithAnInterfaceOfTwoTags)
{
    expectFailure(configuration("<Interface Name=\"VemkEth2\" Mode=\"Dhcp\"></Interface>"), stageSecond);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong node type: 15", "Wrong node name: Interface"}));
}

TEST_F(ConfigureInterfacesTest, FailsWithAThirdInterface)
{
    expectFailure(configuration(one + two + two), joined({stageFirst, stageSecond}));
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Wrong node name: Interface"}));
}

TEST_F(ConfigureInterfacesTest, FailsWithARefusedFirstInterface)
{
    expectFailure(configuration("<Interface Name=\"VemkEth1\"/>" + two), {});
}

TEST_F(ConfigureInterfacesTest, FailsWithARefusedSecondInterface)
{
    expectFailure(configuration(one + "<Interface Name=\"VemkEth2\"/>"), stageFirst);
}

TEST_F(ConfigureInterfacesTest, FailsForARootThatIsNotClosed)
{
    expectFailure("<IpConfiguration From=\"mgmt\" To=\"card7\">" + one, stageFirst);
    EXPECT_TRUE(log.warnings().back().starts_with("xmlTextReaderRead() failed: "));
}

TEST_F(ConfigureInterfacesTest, FailsForABlankDocument)
{
    expectFailure(" ", {});
    EXPECT_EQ(log.warnings().size(), 1U);
}

TEST_F(ConfigureInterfacesTest, FailsIfTheFirstModeCannotBeReadButReadsTheSecond)
{
    uci.remove(firstProto);
    expectFailure(configuration(one + two), joined({stageFirst, stageSecond}));
}

TEST_F(ConfigureInterfacesTest, FailsIfTheSecondModeCannotBeRead)
{
    uci.remove(secondProto);
    expectFailure(configuration(one + two), joined({stageFirst, stageSecond}));
}

TEST_F(ConfigureInterfacesTest, RefusesToDisableBothInterfaces)
{
    uci.set(firstProto, "none");
    uci.set(secondProto, "none");
    expectFailure("<IpConfiguration/>", {});
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_INFO, "Disabling both network interfaces is forbidden"}}));
}

TEST_F(ConfigureInterfacesTest, ComparesBothModesExactly)
{
    uci.set(firstProto, "none");
    uci.set(secondProto, "nonesuch");
    expectSuccess("<IpConfiguration/>", {});
}

TEST_F(ConfigureInterfacesTest, DoesNotMentionDisablingIfTheParseFailed)
{
    uci.set(firstProto, "none");
    uci.set(secondProto, "none");
    expectFailure(configuration("<Interface/>"), {});
    EXPECT_TRUE(log.infos().empty());
}

TEST_F(ConfigureInterfacesTest, IgnoresAFailingListOfChanges)
{
    shell.answer("uci -q changes ", exitStatus(1));
    expectSuccess(configuration(one), stageFirst);
}

TEST_F(ConfigureInterfacesTest, FailsIfTheCommitFails)
{
    shell.answer("uci -q commit ", exitStatus(1));
    EXPECT_EQ(configureInterfaces(configuration(one)), -1);
    EXPECT_EQ(shell.commands().back(), "uci -q commit ");
}

TEST_F(ConfigureInterfacesTest, RunNoCommandIfNoReaderCanBeMade)
{
    const NoXmlMemory noMemory;
    EXPECT_EQ(configureInterfaces(configuration(one)), -1);
    EXPECT_TRUE(shell.commands().empty());
}
