#include <filesystem>

#include "foundation/logpattern.h"

using namespace pvtest;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// An error record as the log file holds it, in text form.
static std::string textErrorRecord(const std::string& from, const std::string& text)
{
    return literal("Time:  ") + clockPattern + literal("\nFrom:  " + from + "\nError: " + text + "\n\n");
}

TEST(Log, FailedInitLeavesTheOpenLogAloneOrNoneOpen)
{
    ScratchDir dir;
    {
        LogCapture capture;
        kvfLog("before\n");
        EXPECT_FALSE(kvfInit("other.txt"));
        kvfLog("after\n");
        EXPECT_FALSE(kvfFileExists("other.txt"));
        EXPECT_EQ(capture.text(), "before\nafter\n");
    }
    kvfShutdown();
    EXPECT_FALSE(kvfInit("no/such/folder/log.txt"));
    EXPECT_FALSE(kvfLog("nothing\n"));
}

TEST(Log, ClosedLogWritesNothingAnywhere)
{
    ScratchDir dir;
    restartLog("closed.txt");
    kvfShutdown();
    std::string closedLog = readFile("closed.txt");
    CaptureStdout();
    kvfSetConsoleEcho(true);
    EXPECT_FALSE(kvfLog("lost %d\n", 1));
    // An error still reaches the console, only the console.
    EXPECT_FALSE(kvfError("PVTEXTURE::load", "", "bad header"));
    kvfSetConsoleEcho(false);
    EXPECT_EQ(GetCapturedStdout(), "ERROR\n   from: PVTEXTURE::load - Error\n   text: bad header\n");
    EXPECT_EQ(readFile("closed.txt"), closedLog);
}

TEST(Log, InitWithoutNameStartsTheTablesOnlyAndShutdownEndsThem)
{
    ScratchDir dir;
    kvfShutdown();
    CaptureStdout();
    kvfSetConsoleEcho(true);
    EXPECT_TRUE(kvfInit(nullptr));
    EXPECT_EQ(kvfNewId(), 1u);
    EXPECT_EQ(kvfNewTimer(1.0f), 0);
    EXPECT_FALSE(kvfLog("nowhere\n"));
    EXPECT_TRUE(kvfShutdown());
    EXPECT_EQ(kvfNewId(), 0u);
    EXPECT_FALSE(kvfReleaseId(1));
    kvfSetConsoleEcho(false);
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(Log, ErrorRecordsInText)
{
    ScratchDir dir;
    LogCapture capture;
    CaptureStdout();
    EXPECT_FALSE(kvfError("PVTEXTURE::load", "wall.tga", "bad size %d", 3));
    kvfSetConsoleEcho(true);
    EXPECT_FALSE(kvfError("PVMESH::render", "", "%s", "100% wrong"));
    kvfSetConsoleEcho(false);
    std::string meshRecord = textErrorRecord("PVMESH::render - Error", "100% wrong");
    EXPECT_TRUE(matchesWhole(
        capture.text(), textErrorRecord("PVTEXTURE::load - Error (wall.tga)", "bad size 3") + meshRecord))
        << capture.text();
    std::string echoed = GetCapturedStdout();
    EXPECT_TRUE(matchesWhole(
        echoed, literal("ERROR\n   from: PVMESH::render - Error\n   text: 100% wrong\n") + meshRecord))
        << echoed;
}

TEST(Log, HtmlPageAndTheModeOutlivingShutdown)
{
    ScratchDir dir;
    restartLog("page.html");
    CaptureStdout();
    kvfSetConsoleEcho(true);
    kvfLog("   three blanks\n");
    kvfSetConsoleEcho(false);
    kvfLog("one two\nsecond  line");
    kvfLog(" x\n");
    kvfError("PVFONT::load", "arial", "a  b");
    kvfShutdown();
    std::string log = readFile("page.html");
    LogSummary summary = readSummary(log);
    ASSERT_TRUE(summary.balanced()) << log;
    std::string expected =
        htmlStartBanner(true) +
        literal("&nbsp&nbsp three blanks<BR>\none two<BR>\nsecond&nbsp line x<BR>\n") +
        literal("Time:&nbsp <B>") + clockPattern + literal("</B><BR>\n") +
        literal("From:&nbsp <B>PVFONT::load - Error (arial)</B><BR>\nError: <B>a&nbsp b</B><BR>\n<BR>\n") +
        literal("<H4><BR>\n<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\">" + summary.ratioLine + "<BR>\n") +
        peakPattern + literal("<BR>\n" + summary.totalLine + "<BR>\n[Kolvane foundation 0.4 terminated at ") +
        dateTimePattern + literal("]<BR>\n</H4></BODY></HTML>");
    EXPECT_TRUE(matchesWhole(log, expected)) << log;
    // The console gets the text as formatted, not its HTML form.
    EXPECT_EQ(GetCapturedStdout(), "   three blanks\n");

    // A later log, whatever its name, is written as HTML without the page start.
    ASSERT_TRUE(kvfInit("later.txt"));
    kvfLog("  a\n");
    std::string later = readFile("later.txt");
    EXPECT_TRUE(matchesWhole(later, htmlStartBanner(false) + literal("&nbsp a<BR>\n"))) << later;
}

TEST(Log, OverlongHtmlExpansionsAreCutAtWholePieces)
{
    ScratchDir dir;
    restartLog("long.html");
    std::string before = readFile("long.html");
    // Each blank followed by a blank and each line feed take five characters:
    // 204 of them fill 1,020 of the 1,023 usable bytes, a 205th does not fit.
    kvfLog("%s", std::string(1000, ' ').c_str());
    kvfLog("%s", std::string(1000, '\n').c_str());
    kvfLog("%s", (std::string(1020, 'y') + "\n").c_str());
    // 1,019 bytes and a break would need 1,025 with the terminator.
    kvfLog("%s", (std::string(1019, 'z') + "\n").c_str());
    kvfLog("end");
    std::string blanks, breaks;
    for (int i = 0; i < 204; ++i)
        blanks += "&nbsp", breaks += "<BR>\n";
    EXPECT_EQ(readFile("long.html").substr(before.size()),
              blanks + breaks + std::string(1020, 'y') + std::string(1019, 'z') + "end");
}
