#include "foundation/kvfparser.h"

#include "foundation/kvffile.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const int lineBytes = KVF_MAX_LINE + 1;

// Size of an open file found by seeking to its end; -1 when unknown or too large.
long fileSize(FILE* file)
{
    if (fseek(file, 0, SEEK_END) != 0)
        return -1;
    long size = ftell(file);
    if (size < 0 || size >= INT_MAX)
        return -1;
    rewind(file);
    return size;
}

// Reads the whole file into a counted block with a terminating zero byte.
bool loadContent(kvfParser* parser, FILE* file, const char* path)
{
    long size = fileSize(file);
    if (size < 1) {
        kvfLog("kvfOpenParser: file '%s' is empty\n", path);
        return false;
    }
    unsigned int needed = static_cast<unsigned int>(size) + 1;
    char* buffer = static_cast<char*>(kvfMalloc(needed));
    if (!buffer) {
        kvfLog("kvfOpenParser: out of memory (%u bytes needed)\n", needed);
        return false;
    }
    if (fread(buffer, 1, size, file) != static_cast<size_t>(size)) {
        // Plain release on purpose: the counted allocation stays unmatched.
        free(buffer);
        kvfLog("kvfOpenParser: file '%s' is corrupted\n", path);
        return false;
    }
    buffer[size] = '\0';
    parser->buffer = buffer;
    parser->size = static_cast<int>(size);
    parser->position = 0;
    return true;
}

bool isOpen(const kvfParser* parser) { return parser && parser->buffer; }

// Where the line starting at from ends: the first line feed of the rest of the
// content, else its first carriage return, else null.
const char* findLineEnd(const kvfParser* parser, const char* from, bool& atLineFeed)
{
    size_t rest = static_cast<size_t>(parser->buffer + parser->size - from);
    const void* end = memchr(from, '\n', rest);
    atLineFeed = end != nullptr;
    if (!end)
        end = memchr(from, '\r', rest);
    return static_cast<const char*>(end);
}

// The value text of the first compact line containing key: it starts one
// character after the key. Null when no line holds the key.
const char* findValue(const kvfParser* parser, const char* key, char* line)
{
    if (!isOpen(parser) || !key)
        return nullptr;
    kvfParser search = *parser;
    search.position = 0;
    while (kvfReadCompactLine(&search, line)) {
        const char* found = strstr(line, key);
        if (!found)
            continue;
        const char* afterKey = found + strlen(key);
        return *afterKey ? afterKey + 1 : afterKey;
    }
    return nullptr;
}

}  // namespace

bool kvfOpenParser(kvfParser* parser, const char* path)
{
    if (!parser || !path) {
        kvfLog("kvfOpenParser: invalid params\n");
        return false;
    }
    FILE* file = kvfOpenReadable(path);
    if (!file) {
        kvfLog("kvfOpenParser: unable to open file %s\n", path);
        return false;
    }
    bool loaded = loadContent(parser, file, path);
    fclose(file);
    return loaded;
}

bool kvfCloseParser(kvfParser* parser)
{
    if (!parser) {
        kvfLog("kvfCloseParser: invalid params\n");
        return false;
    }
    if (!parser->buffer) {
        kvfLog("kvfCloseParser: parser already free\n");
        return false;
    }
    kvfFree(parser->buffer);
    parser->buffer = nullptr;
    parser->size = 0;
    parser->position = 0;
    return true;
}

bool kvfStripComments(kvfParser* parser, char mark)
{
    if (!isOpen(parser))
        return false;
    bool found = false;
    char* content = parser->buffer;
    int i = 0;
    while (i < parser->size) {
        if (content[i] != mark) {
            ++i;
            continue;
        }
        found = true;
        // The mark goes even when it is a line end character; the blanks stop
        // before the next line end, which is looked at again as a mark.
        content[i++] = ' ';
        while (i < parser->size && content[i] != '\r' && content[i] != '\n')
            content[i++] = ' ';
    }
    return found;
}

bool kvfReadLine(kvfParser* parser, char* line)
{
    if (!isOpen(parser) || !line || parser->position < 0)
        return false;
    if (parser->position >= parser->size)
        return false;
    const char* start = parser->buffer + parser->position;
    bool atLineFeed = false;
    const char* end = findLineEnd(parser, start, atLineFeed);
    // Without any line end the line reaches past the content, over the
    // terminator slot.
    if (!end)
        end = parser->buffer + parser->size + 1;
    int copied = static_cast<int>(end - start);
    // Only a line feed keeps the whole copy; a lone carriage return loses the
    // line's last character, the end of the content only the terminator slot.
    int kept = atLineFeed ? copied : copied - 1;
    if (kept < 0)
        kept = 0;
    if (kept > KVF_MAX_LINE)
        kept = KVF_MAX_LINE;
    memcpy(line, start, static_cast<size_t>(kept));
    line[kept] = '\0';
    parser->position += copied + 1;
    return true;
}

bool kvfReadCompactLine(kvfParser* parser, char* line)
{
    char raw[lineBytes];
    if (!line || !kvfReadLine(parser, raw))
        return false;
    char* out = line;
    for (const char* c = raw; *c; ++c)
        if (*c != ' ' && *c != '\t')
            *out++ = *c;
    *out = '\0';
    return true;
}

bool kvfGetInt(const kvfParser* parser, const char* key, int* value)
{
    char line[lineBytes];
    const char* text = value ? findValue(parser, key, line) : nullptr;
    if (!text)
        return false;
    long number = strtol(text, nullptr, 10);
    if (number > INT_MAX)
        number = INT_MAX;
    if (number < INT_MIN)
        number = INT_MIN;
    *value = static_cast<int>(number);
    return true;
}

bool kvfGetFloat(const kvfParser* parser, const char* key, float* value)
{
    char line[lineBytes];
    const char* text = value ? findValue(parser, key, line) : nullptr;
    if (!text)
        return false;
    *value = static_cast<float>(strtod(text, nullptr));
    return true;
}

bool kvfGetString(const kvfParser* parser, const char* key, char* value)
{
    char line[lineBytes];
    const char* text = value ? findValue(parser, key, line) : nullptr;
    if (!text)
        return false;
    strcpy(value, text);
    const char* first = strchr(value, '"');
    const char* last = strrchr(value, '"');
    if (!first || last == first)
        return false;
    size_t length = static_cast<size_t>(last - first - 1);
    memmove(value, first + 1, length);
    value[length] = '\0';
    return true;
}
