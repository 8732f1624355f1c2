// A run is recorded, and played back: by the recording itself, and by a substation that is made from it.
#include "e2e/cases.h"
#include "e2e/program.h"

#include <gtest/gtest.h>

#include <regex>

namespace ruvo::test {

/// The bundled substation's three sites, each in a folder of its own below $DIR: `visit WHERE SOURCE SITE`
/// visits it with the comms server that SOURCE describes.
const std::string kBundled =
    "S='" RUVO_TEST_DATA "/../examples/substation' ODD='" RUVO_TEST_DATA "/e2e/odd_relays'\n"
    "visit() { mkdir -p $DIR/$1/state; sed -e \"s|^EventRootDir=.*|EventRootDir=$DIR/$1/ev|\" "
    "-e \"s|^ErrorLogPathname=.*|ErrorLogPathname=$DIR/$1/log|\" ${4:-$S/$3.ini} >$DIR/$1/$3.ini\n"
    "RUVO_STATE_DIR=$DIR/$1/state P32LS_SUBSTATION=$2 timeout 60 $RUVO $DIR/$1/$3.ini; }\n";

class RecordedRun : public testing::Test {
protected:
    std::string Shell(const std::string& script) const { return run.Shell(kBundled + script); }
    /// What a visit with that name has left.
    std::map<std::string, std::string> Left(const std::string& visit) const {
        auto files = FilesBelow(run.Folder().Native(visit + "/ev"));
        const std::string log = WithoutTimeStamps(run.Folder().Read(visit + "/log"));
        files["the log"] = std::regex_replace(log, std::regex("/" + visit + "/ev"), "/WHERE/ev");
        return files;
    }

    const CProgramRun run{kLink, "", ""};
};

TEST_F(RecordedRun, GivesTheSameFilesAndTheSameLogAgain) {
    const std::string said = Shell(
        "stand_in=$(echo RUVO | ${RUVO}ctl password encrypt)\n"
        "for site in serial modem ethernet odd; do\n"
        "made=$S/substation.toml ini=$S/$site.ini; [ $site != odd ] || { made=$ODD.toml ini=$ODD.ini; }\n"
        "visit plain $made $site $ini\n"
        "RUVO_RECORD=$DIR/$site.rec visit recorded $made $site $ini\n"
        "visit played $DIR/$site.rec $site $ini\n"
        "${RUVO}ctl recording to-substation $DIR/$site.rec -o $DIR/$site.toml\n"
        "awk -v s=$stand_in '/PASSWORDS/ {p = 1} p && /^RV/ {sub(/=.*/, \"=\" s)} {print}' $ini "
        ">$DIR/stand-in.ini\n"
        "visit made $DIR/$site.toml $site $DIR/stand-in.ini\n"
        "done");
    EXPECT_EQ(said, "");
    const auto expected = Left("plain");
    // Nine day files, as promised, those of the odd relays, and the log.
    EXPECT_EQ(expected.size(), 9U + 10U + 1U);
    EXPECT_NE(expected.at("the log").find("Insufficient password level."), std::string::npos);
    for (const char* visit : {"recorded", "played", "made"})
        EXPECT_EQ(Left(visit), expected) << visit;
}

TEST_F(RecordedRun, TellsWhichCallDiffers) {
    Shell(
        "RUVO_RECORD=$DIR/a.rec visit recorded $S/substation.toml serial\n"
        "sed s/RV002=2/RV002=6/ $S/serial.ini >$DIR/other.ini; sed /RV010=10/d $S/serial.ini >$DIR/fewer.ini\n"
        "head -c 500 $DIR/a.rec >$DIR/cut.rec; head -c 8 $DIR/a.rec >$DIR/head.rec");
    const std::string begin = "p32ls: " + run.Folder().Native() + "/";
    const std::string differs = Shell("visit other $DIR/a.rec serial $DIR/other.ini");
    EXPECT_TRUE(differs.starts_with(begin + "a.rec: call ")) << differs;
    EXPECT_NE(differs.find(" differs: recorded GetValue 2 00.DF; made GetValue 6 00.DF\n"), std::string::npos)
        << differs;
    EXPECT_NE(Left("other").at("the log").find("device address: 6"), std::string::npos);
    const std::string fewer = Shell("visit fewer $DIR/a.rec serial $DIR/fewer.ini");
    EXPECT_NE(fewer.find(" differs: recorded GetValue 10 00.DF; made ClosePort\n"), std::string::npos)
        << fewer;
    const std::string cut = Shell("visit cut $DIR/cut.rec serial");
    EXPECT_NE(cut.find("cut.rec: call "), std::string::npos) << cut;
    EXPECT_NE(cut.find("the entry is cut short\n"), std::string::npos) << cut;
    EXPECT_EQ(Shell("visit head $DIR/head.rec serial"),
              begin.substr(7) + "head.rec: its beginning is cut short\n");
    EXPECT_EQ(
        Shell("cd $DIR; ctl() { ${RUVO}ctl recording \"$@\" 2>&1 | sed 's/byte [0-9]*/byte N/'; "
              "echo ${PIPESTATUS[0]}; }\n"
              "ctl show a.rec | grep -c 'GetEvent 1$'; ctl show cut.rec | tail -n 2; ctl show site.ini\n"
              "ctl to-substation cut.rec -o none/x; ctl show a.rec -o x"),
        "5\nruvoctl: cut.rec: byte N: the entry is cut short\n1\nruvoctl: site.ini: no recording\n1\n"
        "ruvoctl: none/x: No such file or directory\nruvoctl: cut.rec: byte N: the entry is cut short\n1\n"
        "usage: ruvoctl recording show FILE\n       ruvoctl recording to-substation FILE [-o FILE]\n2\n");
}

TEST_F(RecordedRun, IsNoConcernOfTheVisit) {
    const struct {
        const char* record;
        const char* said;
    } rows[] = {
        {"$DIR/none/x.rec", "no recording is made: its folder does not exist"},
        {"$DIR/1/ev/x.rec", "no recording is made: it would be in an event root"},
        {"$DIR/root/x.rec", "no recording is made: it would be in an event root"},
        {"$DIR/link/x.rec", "the recording cannot be made: Not a directory"},
        {"/proc/x.rec", "the recording cannot be made: No such file or directory"},
    };
    Shell("visit plain $S/substation.toml serial; mkdir -p $DIR/1/ev $DIR/real; ln -s $DIR/1 $DIR/other\n"
          "ln -s $DIR/1/ev $DIR/root; ln -s $DIR/real $DIR/link");
    for (const auto& row : rows) {
        const std::string said =
            Shell("rm -rf $DIR/1/ev/* $DIR/1/log; export RUVO_RECORD=" + std::string(row.record) +
                  "\nvisit 1 $S/substation.toml serial");
        EXPECT_NE(said.find(row.said), std::string::npos) << row.record << ": " << said;
        EXPECT_EQ(Left("1"), Left("plain")) << row.record;
    }
    EXPECT_EQ(Shell("ls $DIR/real"), "");
}

} // namespace ruvo::test
