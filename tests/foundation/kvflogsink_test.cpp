#include <numeric>

#include "foundation/kvflogsink.h"
#include "foundation/logpattern.h"

using namespace pvtest;

const auto collect = [](const char* message, void* context) {
    static_cast<std::vector<std::string>*>(context)->push_back(message);
};

TEST(LogSink, ReceivesTheTextLogMessageByMessageUntilRemoved)
{
    ScratchDir dir;
    kvfShutdown();
    kvfSetConsoleEcho(false);
    std::vector<std::string> messages;
    kvfSetLogSink(collect, &messages);
    ASSERT_TRUE(kvfInit("sink.txt"));
    kvfLog("   Progress %d%%\n", 50);
    kvfLog("%s", std::string(3000, 'z').c_str());
    kvfError("PVMESH::render", "", "broken");
    kvfShutdown();
    kvfSetLogSink(nullptr, nullptr);
    EXPECT_EQ(std::accumulate(messages.begin(), messages.end(), std::string()), readFile("sink.txt"));
    EXPECT_EQ(messages[1], "   Progress 50%\n");
    EXPECT_EQ(messages[2], std::string(1023, 'z'));

    const size_t seen = messages.size();
    ASSERT_TRUE(kvfInit("after.txt"));
    kvfLog("unseen\n");
    EXPECT_EQ(messages.size(), seen);

    // An HTML log hands over the text before its expansion.
    restartLog("sink.html");
    kvfSetLogSink(collect, &messages);
    kvfLog("  a\nb");
    kvfSetLogSink(nullptr, nullptr);
    EXPECT_EQ(messages.back(), "  a\nb");
}
