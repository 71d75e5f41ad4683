#include <pevrano.h>

#include <gtest/gtest.h>

#include <dirent.h>
#include <regex>
#include <string>

#include "foundation/logpattern.h"
#include "support/scratch.h"

using namespace pvtest;

namespace {

// Closes whatever log is open and starts a new one, without console echo.
void restartLog(const char* name) {
    kvfShutdown();
    kvfSetConsoleEcho(false);
    ASSERT_TRUE(kvfInit(name));
}

int filesIn(const std::string& directory) {
    int count = 0;
    DIR* dir = opendir(directory.c_str());
    while (dirent* entry = readdir(dir))
        if (entry->d_name[0] != '.') ++count;
    closedir(dir);
    return count;
}

// Ratio line, total line and whether ratio = allocations - releases.
struct Summary {
    std::string ratioLine, totalLine;
    bool balanced = false;
};

Summary readSummary(const std::string& log) {
    Summary summary;
    std::smatch ratio, total;
    std::regex ratioPattern("Final memory ratio: (-?[0-9]+) \\(([0-9]+)/([0-9]+)\\)");
    std::regex totalPattern("Total allocated memory \\(kvfMalloc\\): [0-9]+\\.[0-9]{2} mb \\([0-9]+ bytes\\)");
    if (std::regex_search(log, ratio, ratioPattern)) {
        summary.ratioLine = ratio.str(0);
        summary.balanced = std::stol(ratio.str(1)) == std::stol(ratio.str(2)) - std::stol(ratio.str(3));
    }
    if (std::regex_search(log, total, totalPattern)) summary.totalLine = total.str(0);
    return summary;
}

}  // namespace

TEST(Log, TextLogFromBannerToSummary) {
    ScratchDir dir;
    restartLog("plain.txt");
    EXPECT_TRUE(kvfLog("   Progress %d of %s\n", 3, "ten"));
    EXPECT_TRUE(kvfLog("no line feed, "));
    EXPECT_TRUE(kvfLog("then 100%% done\n"));
    kvfShutdown();
    std::string log = readFile("plain.txt");
    Summary summary = readSummary(log);
    EXPECT_TRUE(summary.balanced) << log;
    EXPECT_TRUE(matchesWhole(log, textStartBanner() +
                                      literal("   Progress 3 of ten\nno line feed, then 100% done\n") +
                                      textSummary(summary.ratioLine, summary.totalLine)))
        << log;
}

TEST(Log, EchoRepeatsEveryMessageOnStandardOutput) {
    ScratchDir dir;
    kvfShutdown();
    StdoutCapture out;
    kvfSetConsoleEcho(true);
    ASSERT_TRUE(kvfInit("echo.txt"));
    kvfLog("   first\n");
    kvfSetConsoleEcho(false);
    kvfLog("   quiet\n");
    kvfSetConsoleEcho(true);
    kvfLog("   last\n");
    kvfSetConsoleEcho(false);
    std::string echoed = out.text();
    EXPECT_TRUE(matchesWhole(echoed, textStartBanner() + literal("   first\n   last\n"))) << echoed;
    std::string log = readFile("echo.txt");
    EXPECT_TRUE(matchesWhole(log, textStartBanner() + literal("   first\n   quiet\n   last\n"))) << log;
}

TEST(Log, SecondInitWhileOpenLeavesTheOpenLogAlone) {
    ScratchDir dir;
    LogCapture capture;
    kvfLog("before\n");
    EXPECT_FALSE(kvfInit("other.txt"));
    kvfLog("after\n");
    EXPECT_FALSE(kvfFileExists("other.txt"));
    EXPECT_EQ(capture.text(), "before\nafter\n");
}

TEST(Log, ClosedLogWritesNothingAnywhere) {
    ScratchDir dir;
    LogCapture capture;
    kvfShutdown();
    std::string closedLog = capture.whole();
    StdoutCapture out;
    kvfSetConsoleEcho(true);
    EXPECT_FALSE(kvfLog("lost %d\n", 1));
    // An error still reaches the console, only the console.
    EXPECT_FALSE(kvfError("PVTEXTURE::load", "", "bad header"));
    kvfSetConsoleEcho(false);
    EXPECT_EQ(out.text(), "ERROR\n   from: PVTEXTURE::load - Error\n   text: bad header\n");
    EXPECT_EQ(capture.whole(), closedLog);
}

TEST(Log, InitWithoutNameStartsTheTablesOnly) {
    ScratchDir dir;
    kvfShutdown();
    StdoutCapture out;
    kvfSetConsoleEcho(true);
    EXPECT_TRUE(kvfInit(nullptr));
    EXPECT_EQ(kvfNewId(), 1u);
    EXPECT_EQ(kvfNewTimer(1.0f), 0);
    EXPECT_FALSE(kvfLog("nowhere\n"));
    EXPECT_TRUE(kvfShutdown());
    kvfSetConsoleEcho(false);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(filesIn(dir.path()), 0);
}

TEST(Log, UnwritableLogFails) {
    ScratchDir dir;
    kvfShutdown();
    EXPECT_FALSE(kvfInit("no/such/folder/log.txt"));
    EXPECT_FALSE(kvfLog("nothing\n"));
}

TEST(Log, ErrorRecordsInText) {
    ScratchDir dir;
    LogCapture capture;
    StdoutCapture out;
    EXPECT_FALSE(kvfError("PVTEXTURE::load", "wall.tga", "bad size %d", 3));
    kvfSetConsoleEcho(true);
    EXPECT_FALSE(kvfError("PVMESH::render", "", "%s", "100% wrong"));
    kvfSetConsoleEcho(false);
    std::string expected = literal("Time:  ") + clockPattern +
                           literal("\nFrom:  PVTEXTURE::load - Error (wall.tga)\nError: bad size 3\n\n") +
                           literal("Time:  ") + clockPattern +
                           literal("\nFrom:  PVMESH::render - Error\nError: 100% wrong\n\n");
    EXPECT_TRUE(matchesWhole(capture.text(), expected)) << capture.text();
    std::string echoed = out.text();
    EXPECT_TRUE(matchesWhole(echoed, literal("ERROR\n   from: PVMESH::render - Error\n   text: 100% wrong\n") +
                                         literal("Time:  ") + clockPattern +
                                         literal("\nFrom:  PVMESH::render - Error\nError: 100% wrong\n\n")))
        << echoed;
}

TEST(Log, HtmlPage) {
    ScratchDir dir;
    restartLog("page.html");
    StdoutCapture out;
    kvfSetConsoleEcho(true);
    kvfLog("   three blanks\n");
    kvfSetConsoleEcho(false);
    kvfLog("one two\nsecond  line");
    kvfLog(" x\n");
    kvfError("PVFONT::load", "arial", "a  b");
    kvfShutdown();
    std::string log = readFile("page.html");
    Summary summary = readSummary(log);
    EXPECT_TRUE(summary.balanced) << log;
    std::string expected =
        literal("<HTML><BODY><H4>[Kolvane foundation 0.4 started at ") + dateTimePattern +
        literal("]<BR>\n<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\"><BR>\n<BR>\n</H4>") +
        literal("&nbsp&nbsp three blanks<BR>\none two<BR>\nsecond&nbsp line x<BR>\n") +
        literal("Time:&nbsp <B>") + clockPattern + literal("</B><BR>\n") +
        literal("From:&nbsp <B>PVFONT::load - Error (arial)</B><BR>\n") +
        literal("Error: <B>a&nbsp b</B><BR>\n<BR>\n") +
        literal("<H4><BR>\n<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\">" + summary.ratioLine + "<BR>\n") +
        "Max\\. physical memory usage: [0-9]+\\.[0-9]{2} mb \\(-?[0-9]+ bytes\\)<BR>\n" +
        literal(summary.totalLine + "<BR>\n[Kolvane foundation 0.4 terminated at ") + dateTimePattern +
        literal("]<BR>\n</H4></BODY></HTML>");
    EXPECT_TRUE(matchesWhole(log, expected)) << log;
    // The console gets the text as formatted, not its HTML form.
    EXPECT_EQ(out.text(), "   three blanks\n");
}

TEST(Log, HtmlModeOutlivesShutdown) {
    ScratchDir dir;
    restartLog("page.html");
    kvfShutdown();
    ASSERT_TRUE(kvfInit("later.txt"));
    kvfLog("  a\n");
    std::string log = readFile("later.txt");
    EXPECT_TRUE(matchesWhole(log, literal("<H4>[Kolvane foundation 0.4 started at ") + dateTimePattern +
                                      literal("]<BR>\n<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\"><BR>\n<BR>\n</H4>") +
                                      literal("&nbsp a<BR>\n")))
        << log;
}

TEST(Log, OverlongMessagesAreCut) {
    ScratchDir dir;
    LogCapture capture;
    StdoutCapture out;
    kvfSetConsoleEcho(true);
    EXPECT_TRUE(kvfLog("%s", std::string(5000, 'x').c_str()));
    kvfSetConsoleEcho(false);
    kvfLog("\nnext\n");
    // 1,023 characters and the terminator fill the 1,024-byte buffer.
    EXPECT_EQ(capture.text(), std::string(1023, 'x') + "\nnext\n");
    EXPECT_EQ(out.text(), std::string(1023, 'x'));
}

TEST(Log, OverlongHtmlExpansionsAreCutAtWholePieces) {
    ScratchDir dir;
    restartLog("long.html");
    std::string before = readFile("long.html");
    // Each blank followed by a blank and each line feed take five characters:
    // 204 of them fill 1,020 of the 1,023 usable bytes, a 205th does not fit.
    kvfLog("%s", std::string(1000, ' ').c_str());
    kvfLog("%s", std::string(1000, '\n').c_str());
    kvfLog("%s", (std::string(1020, 'y') + "\n").c_str());
    kvfLog("end");
    std::string expected;
    for (int i = 0; i < 204; ++i) expected += "&nbsp";
    for (int i = 0; i < 204; ++i) expected += "<BR>\n";
    expected += std::string(1020, 'y') + "end";
    EXPECT_EQ(readFile("long.html").substr(before.size()), expected);
}
