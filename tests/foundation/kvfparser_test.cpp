#include <pevrano.h>

#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>
#include <vector>

#include "support/scratch.h"

using namespace pvtest;

namespace {

// Every line kvfReadLine gives for the file's content.
std::vector<std::string> readLines(const std::string& content) {
    writeFile("lines.txt", content);
    kvfParser parser;
    std::vector<std::string> lines;
    if (!kvfOpenParser(&parser, "lines.txt")) return lines;
    char line[256];
    while (kvfReadLine(&parser, line)) lines.push_back(line);
    kvfCloseParser(&parser);
    return lines;
}

using Lines = std::vector<std::string>;

// A parser opened on a file with the given content, closed on destruction.
class OpenParser {
public:
    explicit OpenParser(const std::string& content) {
        writeFile("parsed.cfg", content);
        opened = kvfOpenParser(&parser, "parsed.cfg");
    }
    ~OpenParser() {
        if (parser.buffer) kvfCloseParser(&parser);
    }
    int getInt(const char* key, int untouched = -999) {
        int value = untouched;
        found = kvfGetInt(&parser, key, &value);
        return value;
    }
    float getFloat(const char* key) {
        float value = -999.0f;
        found = kvfGetFloat(&parser, key, &value);
        return value;
    }
    std::string getString(const char* key) {
        char value[256] = "untouched";
        found = kvfGetString(&parser, key, value);
        return value;
    }
    kvfParser parser;
    bool opened = false;
    bool found = false;
};

}  // namespace

TEST(Parser, OpenAndCloseFailures) {
    ScratchDir dir;
    LogCapture capture;
    kvfParser parser;
    writeFile("empty.cfg", "");
    ASSERT_EQ(mkdir("folder.cfg", 0755), 0);
    EXPECT_FALSE(kvfOpenParser(nullptr, "empty.cfg"));
    EXPECT_FALSE(kvfOpenParser(&parser, nullptr));
    EXPECT_FALSE(kvfOpenParser(&parser, "missing.cfg"));
    // A directory is no file to read.
    EXPECT_FALSE(kvfOpenParser(&parser, "folder.cfg"));
    EXPECT_FALSE(kvfOpenParser(&parser, "empty.cfg"));
    EXPECT_EQ(parser.buffer, nullptr);
    EXPECT_FALSE(kvfCloseParser(nullptr));
    EXPECT_FALSE(kvfCloseParser(&parser));
    EXPECT_EQ(capture.text(),
              "kvfOpenParser: invalid params\n"
              "kvfOpenParser: invalid params\n"
              "kvfOpenParser: unable to open file missing.cfg\n"
              "kvfOpenParser: unable to open file folder.cfg\n"
              "kvfOpenParser: file 'empty.cfg' is empty\n"
              "kvfCloseParser: invalid params\n"
              "kvfCloseParser: parser already free\n");
}

TEST(Parser, OpenHoldsTheContentInOneCountedBlock) {
    ScratchDir dir;
    LogCapture capture;
    writeFile("five.cfg", "A=1\nB");
    kvfMemoryStats before = kvfGetMemoryStats();
    kvfParser parser;
    ASSERT_TRUE(kvfOpenParser(&parser, "five.cfg"));
    kvfMemoryStats opened = kvfGetMemoryStats();
    EXPECT_EQ(parser.size, 5);
    EXPECT_EQ(parser.position, 0);
    EXPECT_EQ(std::string(parser.buffer, 6), std::string("A=1\nB\0", 6));
    EXPECT_EQ(opened.allocations, before.allocations + 1);
    EXPECT_EQ(opened.totalBytes, before.totalBytes + 6);
    EXPECT_TRUE(kvfCloseParser(&parser));
    EXPECT_EQ(parser.buffer, nullptr);
    EXPECT_EQ(parser.size, 0);
    EXPECT_EQ(kvfGetMemoryStats().ratio, before.ratio);
    EXPECT_FALSE(kvfCloseParser(&parser));
    EXPECT_EQ(capture.text(), "kvfCloseParser: parser already free\n");
}

TEST(Parser, LineEnds) {
    ScratchDir dir;
    LogCapture capture;
    // A carriage return before a line feed stays; the last line needs no end.
    EXPECT_EQ(readLines("first\nsecond\r\nthird"), (Lines{"first", "second\r", "third"}));
    EXPECT_EQ(readLines("\n\nlast\n"), (Lines{"", "", "last"}));
    // Carriage returns alone: each line loses its last character.
    EXPECT_EQ(readLines("ab\rcd\r"), (Lines{"a", "c"}));
    EXPECT_EQ(readLines("\rx"), (Lines{"", "x"}));
    // The first line feed anywhere ahead wins over a nearer carriage return.
    EXPECT_EQ(readLines("x=1\ry=2\nz"), (Lines{"x=1\ry=2", "z"}));
    EXPECT_EQ(readLines("q"), (Lines{"q"}));
    EXPECT_EQ(capture.text(), "");
}

TEST(Parser, LongLinesAreCut) {
    ScratchDir dir;
    std::string longLine(300, 'k');
    EXPECT_EQ(readLines(longLine + "\nnext\n" + longLine), (Lines{longLine.substr(0, 255), "next", longLine.substr(0, 255)}));
}

TEST(Parser, CompactLinesDropBlanksAndTabs) {
    ScratchDir dir;
    OpenParser file(" A = 1 \t\r\n\t\tB\t=  \"two words\"\nC");
    ASSERT_TRUE(file.opened);
    char line[256];
    ASSERT_TRUE(kvfReadCompactLine(&file.parser, line));
    EXPECT_STREQ(line, "A=1\r");
    ASSERT_TRUE(kvfReadCompactLine(&file.parser, line));
    EXPECT_STREQ(line, "B=\"twowords\"");
    ASSERT_TRUE(kvfReadCompactLine(&file.parser, line));
    EXPECT_STREQ(line, "C");
    EXPECT_FALSE(kvfReadCompactLine(&file.parser, line));
}

TEST(Parser, CommentsBecomeBlanks) {
    ScratchDir dir;
    OpenParser file("A=1 # note\r\n# whole line\nB=2#x");
    ASSERT_TRUE(file.opened);
    EXPECT_TRUE(kvfStripComments(&file.parser, '#'));
    EXPECT_EQ(std::string(file.parser.buffer), "A=1       \r\n            \nB=2  ");
    EXPECT_FALSE(kvfStripComments(&file.parser, '#'));
    EXPECT_EQ(file.getInt("A"), 1);
    EXPECT_EQ(file.getInt("B"), 2);
    EXPECT_EQ(file.getInt("note"), -999);
    EXPECT_FALSE(file.found);
    EXPECT_FALSE(kvfStripComments(nullptr, '#'));
}

TEST(Parser, LineEndCharactersAsCommentMarks) {
    ScratchDir dir;
    {
        // Each carriage return is blanked with what follows it up to the next
        // line end; the carriage return that stops one run starts the next.
        OpenParser file("A=1\rB=2\r\nC=3\r");
        ASSERT_TRUE(file.opened);
        EXPECT_TRUE(kvfStripComments(&file.parser, '\r'));
        EXPECT_EQ(std::string(file.parser.buffer), "A=1     \nC=3 ");
    }
    {
        OpenParser file("X#\nY\nZ");
        ASSERT_TRUE(file.opened);
        EXPECT_TRUE(kvfStripComments(&file.parser, '\n'));
        EXPECT_EQ(std::string(file.parser.buffer), "X#    ");
    }
}

TEST(Parser, Lookups) {
    ScratchDir dir;
    OpenParser file(
        "WIDTH = 640\n"
        "HEIGHT=480px\n"
        "ABCD=7\n"
        "ABC=5\n"
        "NAME = \"my file\"\n"
        "RAW = plain\n"
        "HALF=\"open\n"
        "SCALE=2.5e1x\n"
        "WIDTH=1024\n"
        "SIGN=-12\n"
        "KEYONLY");
    ASSERT_TRUE(file.opened);
    EXPECT_EQ(file.getInt("WIDTH"), 640);  // the first line wins
    EXPECT_EQ(file.getInt("HEIGHT"), 480); // digits stop at the letters
    EXPECT_EQ(file.getInt("ABCD"), 7);
    // "ABC" is found first inside "ABCD=7": its value starts at "=7".
    EXPECT_EQ(file.getInt("ABC"), 0);
    EXPECT_TRUE(file.found);
    EXPECT_FLOAT_EQ(file.getFloat("ABC"), 0.0f);
    EXPECT_EQ(file.getString("ABC"), "=7");
    EXPECT_FALSE(file.found);
    EXPECT_EQ(file.getInt("SIGN"), -12);
    EXPECT_FLOAT_EQ(file.getFloat("SCALE"), 25.0f);
    EXPECT_FLOAT_EQ(file.getFloat("WIDTH"), 640.0f);
    EXPECT_EQ(file.getString("NAME"), "myfile");
    EXPECT_TRUE(file.found);
    EXPECT_EQ(file.getString("RAW"), "plain");
    EXPECT_FALSE(file.found);
    EXPECT_EQ(file.getString("HALF"), "\"open");
    EXPECT_FALSE(file.found);
    // A key ending its line has an empty value.
    EXPECT_EQ(file.getInt("KEYONLY"), 0);
    EXPECT_TRUE(file.found);
    EXPECT_EQ(file.getString("KEYONLY"), "");
    // Missing keys leave the value alone.
    EXPECT_EQ(file.getInt("DEPTH", 16), 16);
    EXPECT_FALSE(file.found);
    EXPECT_FLOAT_EQ(file.getFloat("DEPTH"), -999.0f);
    EXPECT_EQ(file.getString("DEPTH"), "untouched");
    EXPECT_FALSE(file.found);
}

TEST(Parser, LookupsSearchFromTheStartAndLeaveThePositionAlone) {
    ScratchDir dir;
    OpenParser file("A=1\nB=2\nC=3\n");
    ASSERT_TRUE(file.opened);
    char line[256];
    ASSERT_TRUE(kvfReadLine(&file.parser, line));
    ASSERT_TRUE(kvfReadLine(&file.parser, line));
    EXPECT_EQ(file.getInt("A"), 1);
    ASSERT_TRUE(kvfReadLine(&file.parser, line));
    EXPECT_STREQ(line, "C=3");
    EXPECT_FALSE(kvfReadLine(&file.parser, line));
    EXPECT_EQ(file.getInt("C"), 3);
}

TEST(Parser, FilesWithoutFinalLineEndOrWithCarriageReturns) {
    ScratchDir dir;
    {
        OpenParser file("A=1\nS=\"x y\"");
        ASSERT_TRUE(file.opened);
        EXPECT_EQ(file.getString("S"), "xy");
        EXPECT_TRUE(file.found);
    }
    {
        OpenParser file("A=12");
        EXPECT_EQ(file.getInt("A"), 12);
    }
    {
        OpenParser file("A=3\r\nS=\"q\"\r\nF=0.5\r\n");
        EXPECT_EQ(file.getInt("A"), 3);
        EXPECT_EQ(file.getString("S"), "q");
        EXPECT_TRUE(file.found);
        EXPECT_FLOAT_EQ(file.getFloat("F"), 0.5f);
    }
    {
        // Carriage returns alone cost each line its last character.
        OpenParser file("A=34\rB=5\r");
        EXPECT_EQ(file.getInt("A"), 3);
        EXPECT_EQ(file.getInt("B"), 0);
        EXPECT_TRUE(file.found);
    }
}

TEST(Parser, ClosedParserAndBadArguments) {
    ScratchDir dir;
    LogCapture capture;
    kvfParser closed;
    char line[256] = "kept";
    int number = 5;
    EXPECT_FALSE(kvfReadLine(&closed, line));
    EXPECT_FALSE(kvfReadLine(nullptr, line));
    EXPECT_FALSE(kvfReadCompactLine(&closed, line));
    EXPECT_FALSE(kvfGetInt(&closed, "A", &number));
    EXPECT_FALSE(kvfGetInt(nullptr, "A", &number));
    EXPECT_STREQ(line, "kept");
    EXPECT_EQ(number, 5);
    OpenParser file("A=1\n");
    EXPECT_FALSE(kvfGetInt(&file.parser, nullptr, &number));
    EXPECT_FALSE(kvfGetInt(&file.parser, "A", nullptr));
    EXPECT_FALSE(kvfReadLine(&file.parser, nullptr));
    EXPECT_EQ(capture.text(), "");
}

TEST(Files, SizeAndExistence) {
    ScratchDir dir;
    writeFile("ten.bin", std::string("0123\0\n6789", 10));
    writeFile("empty.bin", "");
    EXPECT_EQ(kvfFileSize("ten.bin"), 10);
    EXPECT_EQ(kvfFileSize("empty.bin"), 0);
    EXPECT_EQ(kvfFileSize("missing.bin"), -1);
    EXPECT_EQ(kvfFileSize(nullptr), -1);
    EXPECT_EQ(kvfFileSize(dir.path().c_str()), -1);
    EXPECT_TRUE(kvfFileExists("ten.bin"));
    EXPECT_TRUE(kvfFileExists("empty.bin"));
    EXPECT_FALSE(kvfFileExists("missing.bin"));
    EXPECT_FALSE(kvfFileExists(nullptr));
    EXPECT_FALSE(kvfFileExists(dir.path().c_str()));
}
