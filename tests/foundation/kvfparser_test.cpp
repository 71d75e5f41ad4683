#include <pevrano.h>

#include <cstdio>
#include <sys/stat.h>

#include "support/glfixture.h"

using namespace pvtest;

// Each case runs in a scratch folder with the log captured.
using Parser = RecordingTest;
using Files = RecordingTest;

namespace {

using Lines = std::vector<std::string>;

// A parser opened on a file with the given content, closed on destruction.
class OpenParser {
public:
    explicit OpenParser(const std::string& content)
    {
        writeFile("parsed.cfg", content);
        opened = kvfOpenParser(&parser, "parsed.cfg");
    }
    ~OpenParser()
    {
        if (parser.buffer)
            kvfCloseParser(&parser);
    }
    // The value of a key read as an int ('i'), a float ('f', all its digits)
    // or a string ('s'); what the untouched value reads when the key is missing.
    std::string lookup(char kind, const char* key)
    {
        char text[256] = "untouched";
        int integer = -999;
        float number = -999.0f;
        switch (kind) {
        case 'i':
            found = kvfGetInt(&parser, key, &integer);
            return std::to_string(integer);
        case 'f':
            found = kvfGetFloat(&parser, key, &number);
            snprintf(text, sizeof text, "%.9g", number);
            return text;
        }
        found = kvfGetString(&parser, key, text);
        return text;
    }
    kvfParser parser;
    bool opened = false;
    bool found = false;
};

// Every line the given reader gives for the content.
Lines readLines(const std::string& content, bool (*read)(kvfParser*, char*) = kvfReadLine)
{
    OpenParser file(content);
    Lines lines;
    char line[256];
    while (file.opened && read(&file.parser, line))
        lines.push_back(line);
    return lines;
}

}  // namespace

TEST_F(Parser, OpenAndCloseFailures)
{
    kvfParser parser;
    writeFile("empty.cfg", "");
    ASSERT_EQ(mkdir("folder.cfg", 0755), 0);
    EXPECT_FALSE(kvfOpenParser(nullptr, "empty.cfg"));
    // A directory is no file to read.
    for (const char* name : {static_cast<const char*>(nullptr), "missing.cfg", "folder.cfg", "empty.cfg"})
        EXPECT_FALSE(kvfOpenParser(&parser, name));
    EXPECT_EQ(parser.buffer, nullptr);
    EXPECT_FALSE(kvfCloseParser(nullptr));
    EXPECT_FALSE(kvfCloseParser(&parser));
    EXPECT_EQ(log.text(), "kvfOpenParser: invalid params\n"
                          "kvfOpenParser: invalid params\n"
                          "kvfOpenParser: unable to open file missing.cfg\n"
                          "kvfOpenParser: unable to open file folder.cfg\n"
                          "kvfOpenParser: file 'empty.cfg' is empty\n"
                          "kvfCloseParser: invalid params\n"
                          "kvfCloseParser: parser already free\n");
}

// The content is held in one counted block with a terminator after it.
TEST_F(Parser, OpenHoldsTheContentInOneCountedBlock)
{
    writeFile("five.cfg", "A=1\nB");
    kvfMemoryStats before = kvfGetMemoryStats();
    kvfParser parser;
    ASSERT_TRUE(kvfOpenParser(&parser, "five.cfg"));
    EXPECT_EQ(parser.size, 5);
    EXPECT_EQ(std::string(parser.buffer, 6), std::string("A=1\nB\0", 6));
    EXPECT_EQ(kvfGetMemoryStats().totalBytes, before.totalBytes + 6);
    EXPECT_TRUE(kvfCloseParser(&parser));
    EXPECT_EQ(kvfGetMemoryStats().ratio, before.ratio);
}

TEST_F(Parser, LineEnds)
{
    // A carriage return before a line feed stays; the last line needs no end.
    EXPECT_EQ(readLines("first\nsecond\r\nthird"), (Lines {"first", "second\r", "third"}));
    EXPECT_EQ(readLines("\n\nlast\n"), (Lines {"", "", "last"}));
    // Carriage returns alone: each line loses its last character.
    EXPECT_EQ(readLines("ab\rcd\r"), (Lines {"a", "c"}));
    EXPECT_EQ(readLines("\rx"), (Lines {"", "x"}));
    // The first line feed anywhere ahead wins over a nearer carriage return.
    EXPECT_EQ(readLines("x=1\ry=2\nz"), (Lines {"x=1\ry=2", "z"}));
    // Lines are cut to 255 characters.
    std::string longLine(300, 'k');
    EXPECT_EQ(readLines(longLine + "\nnext\n" + longLine),
              (Lines {longLine.substr(0, 255), "next", longLine.substr(0, 255)}));
    // Compact lines lose their blanks and tabs, quoted or not.
    EXPECT_EQ(readLines(" A = 1 \t\r\n\t\tB\t=  \"two words\"\nC", kvfReadCompactLine),
              (Lines {"A=1\r", "B=\"twowords\"", "C"}));
    EXPECT_EQ(log.text(), "");
}

TEST_F(Parser, CommentsBecomeBlanksUpToTheLineEnd)
{
    // With a line-end character as the mark, the one that stops a run starts the next.
    const struct {
        const char* content;
        char mark;
        const char* stripped;
    } cases[] = {{"A=1 # note\r\n# whole line\nB=2#x", '#', "A=1       \r\n            \nB=2  "},
                 {"A=1\rB=2\r\nC=3\r", '\r', "A=1     \nC=3 "},
                 {"X#\nY\nZ", '\n', "X#    "}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        OpenParser file(c.content);
        EXPECT_TRUE(kvfStripComments(&file.parser, c.mark));
        EXPECT_EQ(std::string(file.parser.buffer), c.stripped);
        EXPECT_FALSE(kvfStripComments(&file.parser, c.mark));
    }
}

TEST_F(Parser, Lookups)
{
    // Comments are stripped first: what follows a mark is no key.
    OpenParser file("WIDTH = 640\nHEIGHT=480px\nABCD=7\nABC=5\nNAME = \"my file\"\nRAW = plain\nHALF=\"open\n"
                    "SCALE=2.5e1x #NOTE=3\nKEYONLY\nWIDTH=1024\nSIGN=-12");
    ASSERT_TRUE(kvfStripComments(&file.parser, '#'));
    const struct {
        const char* key;
        char kind;
        const char* value;
        bool found;
    } lookups[] = {{"WIDTH", 'i', "640", true},  // the first line wins
                   {"HEIGHT", 'i', "480", true},  // digits stop at the letters
                   {"ABCD", 'i', "7", true},
                   // "ABC" is found first inside "ABCD=7": its value starts at "=7".
                   {"ABC", 'i', "0", true},
                   {"ABC", 'f', "0", true},
                   {"ABC", 's', "=7", false},
                   {"SIGN", 'i', "-12", true},
                   {"SCALE", 'f', "25", true},
                   {"WIDTH", 'f', "640", true},
                   // Quotes give the text between them; without a pair the raw text fails.
                   {"NAME", 's', "myfile", true},
                   {"RAW", 's', "plain", false},
                   {"HALF", 's', "\"open", false},
                   // A key ending its line has an empty value.
                   {"KEYONLY", 'i', "0", true},
                   {"KEYONLY", 's', "", false},
                   // Missing keys leave the value alone.
                   {"NOTE", 'i', "-999", false},
                   {"DEPTH", 'f', "-999", false},
                   {"DEPTH", 's', "untouched", false}};
    for (const auto& lookup : lookups) {
        SCOPED_TRACE(std::string(lookup.key) + " as " + lookup.kind);
        EXPECT_EQ(file.lookup(lookup.kind, lookup.key), lookup.value);
        EXPECT_EQ(file.found, lookup.found);
    }
    // Lookups search from the start and leave the line position alone.
    char line[256];
    ASSERT_TRUE(kvfReadLine(&file.parser, line));
    EXPECT_EQ(file.lookup('i', "WIDTH"), "640");
    ASSERT_TRUE(kvfReadLine(&file.parser, line));
    EXPECT_STREQ(line, "HEIGHT=480px");
}

TEST_F(Parser, ClosedParserAndBadArgumentsAreRefusedSilently)
{
    kvfParser closed;
    char line[256] = "kept";
    int number = 5;
    EXPECT_FALSE(kvfReadLine(&closed, line));
    EXPECT_FALSE(kvfReadLine(nullptr, line));
    EXPECT_FALSE(kvfReadCompactLine(&closed, line));
    EXPECT_FALSE(kvfGetInt(&closed, "A", &number));
    EXPECT_FALSE(kvfGetInt(nullptr, "A", &number));
    EXPECT_FALSE(kvfStripComments(nullptr, '#'));
    EXPECT_STREQ(line, "kept");
    EXPECT_EQ(number, 5);
    OpenParser file("A=1\n");
    EXPECT_FALSE(kvfGetInt(&file.parser, nullptr, &number));
    EXPECT_FALSE(kvfGetInt(&file.parser, "A", nullptr));
    EXPECT_FALSE(kvfReadLine(&file.parser, nullptr));
    EXPECT_EQ(log.text(), "");
}

TEST_F(Files, SizeAndExistence)
{
    writeFile("ten.bin", std::string("0123\0\n6789", 10));
    const std::pair<const char*, int> cases[] = {
        {"ten.bin", 10}, {"missing.bin", -1}, {nullptr, -1}, {dir.path().c_str(), -1}};
    for (const auto& [name, size] : cases) {
        EXPECT_EQ(kvfFileSize(name), size) << (name ? name : "null");
        EXPECT_EQ(kvfFileExists(name), size >= 0) << (name ? name : "null");
    }
}
