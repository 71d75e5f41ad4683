#include "foundation/kvflog.h"

#include "foundation/kvflogsink.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfplatform.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

// A formatted message, and its HTML expansion, each fit in this many bytes;
// longer texts are cut at the end.
const size_t messageBytes = 1024;

FILE* logFile = nullptr;
bool htmlMode = false;
bool consoleEcho = true;
KVFLOGSINK logSink = nullptr;
void* logSinkContext = nullptr;

// Appends piece to out when it fits whole (terminator included).
bool appendWhole(char* out, size_t& length, const char* piece)
{
    size_t pieceLength = strlen(piece);
    if (length + pieceLength + 1 > messageBytes)
        return false;
    memcpy(out + length, piece, pieceLength + 1);
    length += pieceLength;
    return true;
}

// HTML form of a message: line feeds become breaks, every blank followed by
// another blank becomes a non-breaking space. Nothing else is escaped, so the
// banners' tags reach the page as tags.
void expandHtml(const char* text, char* out)
{
    size_t length = 0;
    out[0] = '\0';
    for (const char* c = text; *c; ++c) {
        const char single[2] = {*c, '\0'};
        const char* piece = single;
        if (*c == '\n')
            piece = "<BR>\n";
        else if (*c == ' ' && c[1] == ' ')
            piece = "&nbsp";
        if (!appendWhole(out, length, piece))
            return;
    }
}

void writeText(const char* text)
{
    if (htmlMode) {
        char expanded[messageBytes];
        expandHtml(text, expanded);
        fputs(expanded, logFile);
    } else {
        fputs(text, logFile);
    }
    fflush(logFile);
}

void echoToConsole(const char* text)
{
    if (!consoleEcho)
        return;
    fputs(text, stdout);
    fflush(stdout);
}

// Day first, no leading zeros: 3/7/2008 14:5:9.120.
void formatDateTime(char* out, size_t capacity)
{
    kvfLocalTime now = kvfGetLocalTime();
    snprintf(out, capacity, "%u/%u/%u %u:%u:%u.%u", now.day, now.month, now.year, now.hour, now.minute,
             now.second, now.millisecond);
}

void formatClockTime(char* out, size_t capacity)
{
    kvfLocalTime now = kvfGetLocalTime();
    snprintf(out, capacity, "%u:%u:%u.%u", now.hour, now.minute, now.second, now.millisecond);
}

void writeSummary()
{
    char timeText[64];
    formatDateTime(timeText, sizeof timeText);
    if (htmlMode)
        kvfLog("<H4>\n<HR ALIGN=CENTER WIDTH=\"100%%\" SIZE=\"2\">");
    else
        kvfLog("\n-------------------------------------------------------\n");
    const kvfMemoryStats stats = kvfGetMemoryStats();
    const float megabyte = 1048576.0f;
    kvfLog("Final memory ratio: %d (%u/%u)\n", stats.ratio, stats.allocations, stats.releases);
    // The peak in bytes is printed signed, as the summary always has.
    kvfLog("Max. physical memory usage: %.2f mb (%d bytes)\n",
           static_cast<float>(stats.peakPhysical) / megabyte, static_cast<int>(stats.peakPhysical));
    kvfLog("Total allocated memory (kvfMalloc): %.2f mb (%u bytes)\n",
           static_cast<float>(stats.totalBytes) / megabyte, stats.totalBytes);
    kvfLog("[%s terminated at %s]\n", KVF_VERSION_STRING, timeText);
    if (htmlMode) {
        kvfLog("</H4>");
        kvfLog("</BODY></HTML>");
    }
}

}  // namespace

bool kvfOpenLog(const char* logFileName)
{
    if (logFile || !logFileName)
        return false;
    logFile = fopen(logFileName, "w");
    if (!logFile)
        return false;
    if (strstr(logFileName, ".html")) {
        htmlMode = true;
        kvfLog("<HTML><BODY>");
    }
    return true;
}

void kvfLogStartBanner()
{
    char timeText[64];
    formatDateTime(timeText, sizeof timeText);
    if (htmlMode)
        kvfLog("<H4>[%s started at %s]\n<HR ALIGN=CENTER WIDTH=\"100%%\" SIZE=\"2\">\n\n</H4>",
               KVF_VERSION_STRING, timeText);
    else
        kvfLog("[%s started at %s]\n-------------------------------------------------------\n\n",
               KVF_VERSION_STRING, timeText);
}

void kvfCloseLog()
{
    if (!logFile)
        return;
    writeSummary();
    fclose(logFile);
    logFile = nullptr;
}

bool kvfLog(const char* format, ...)
{
    if (!logFile || !format)
        return false;
    char message[messageBytes];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    echoToConsole(message);
    writeText(message);
    if (logSink)
        logSink(message, logSinkContext);
    return true;
}

bool kvfError(const char* from, const char* detail, const char* format, ...)
{
    char message[messageBytes] = "";
    if (format) {
        va_list arguments;
        va_start(arguments, format);
        vsnprintf(message, sizeof message, format, arguments);
        va_end(arguments);
    }
    char source[messageBytes];
    if (detail && *detail)
        snprintf(source, sizeof source, "%s - Error (%s)", from ? from : "", detail);
    else
        snprintf(source, sizeof source, "%s - Error", from ? from : "");
    if (consoleEcho) {
        printf("ERROR\n   from: %s\n   text: %s\n", source, message);
        fflush(stdout);
    }
    char timeText[64];
    formatClockTime(timeText, sizeof timeText);
    if (htmlMode) {
        kvfLog("Time:  <B>%s</B>\n", timeText);
        kvfLog("From:  <B>%s</B>\n", source);
        kvfLog("Error: <B>%s</B>\n\n", message);
    } else {
        kvfLog("Time:  %s\n", timeText);
        kvfLog("From:  %s\n", source);
        kvfLog("Error: %s\n\n", message);
    }
    return false;
}

void kvfSetConsoleEcho(bool on) { consoleEcho = on; }

void kvfSetLogSink(KVFLOGSINK sink, void* context)
{
    logSink = sink;
    logSinkContext = context;
}
