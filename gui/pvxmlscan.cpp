#include "gui/pvxmlscan.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <strings.h>

#include <tinyxml.h>

#include "foundation/kvffile.h"

namespace {

// Interfaces and effects nest a few levels; anything deeper is refused.
const unsigned int maxNesting = 256;
const size_t maxFileSize = 16 * 1024 * 1024;
// The parser steps over a multi-byte character in one go, up to 4 bytes, even
// when the text ends inside it: NULs after the text's own keep every such
// step inside the buffer.
const size_t stepPadding = 4;

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// c is one of the characters of set (never the NUL that ends the text).
bool isOneOf(char c, const char* set) { return c != '\0' && strchr(set, c) != nullptr; }

const char* skipSpaces(const char* p)
{
    while (isSpace(*p))
        ++p;
    return p;
}

// Element names start with a letter, '_' or any byte of a multi-byte character.
bool startsName(char c)
{
    const unsigned char byte = static_cast<unsigned char>(c);
    return isalpha(byte) || c == '_' || byte >= 127;
}

// Past the end marker, or at the NUL when it never comes.
const char* skipPast(const char* p, const char* end)
{
    const char* found = strstr(p, end);
    return found ? found + strlen(end) : p + strlen(p);
}

// A declaration is accepted only as <?xml followed by name="value" pairs whose
// values hold no space, quote or angle bracket, then ?>: with that shape the
// parser and this check agree on where it ends. Returns null when refused.
const char* skipDeclaration(const char* p)
{
    p += 5;
    for (;;) {
        const char* q = skipSpaces(p);
        if (q[0] == '?' && q[1] == '>')
            return q + 2;
        if (q == p || !(isalpha(static_cast<unsigned char>(*q)) || *q == '_' || *q == ':'))
            return nullptr;
        while (isalnum(static_cast<unsigned char>(*q)) || isOneOf(*q, "_:.-"))
            ++q;
        q = skipSpaces(q);
        if (*q++ != '=')
            return nullptr;
        q = skipSpaces(q);
        const char quote = *q++;
        if (quote != '"' && quote != '\'')
            return nullptr;
        while (*q && !isSpace(*q) && !isOneOf(*q, "\"'<>"))
            ++q;
        if (*q++ != quote)
            return nullptr;
        p = q;
    }
}

// From just after an element's '<' to just after its '>', quoted values
// skipped whole; selfClosed tells whether the tag ended with "/>".
const char* skipTag(const char* p, bool* selfClosed)
{
    char previous = 0;
    while (*p && *p != '>') {
        if (*p == '"' || *p == '\'') {
            const char* end = strchr(p + 1, *p);
            if (!end)
                return p + strlen(p);
            p = end;
        }
        previous = *p++;
    }
    *selfClosed = previous == '/';
    return *p ? p + 1 : p;
}

}  // namespace

bool pvXmlNestingWithin(const char* text, unsigned int maxDepth)
{
    unsigned int depth = 0;
    const char* p = text;
    while ((p = strchr(p, '<')) != nullptr) {
        if (strncasecmp(p, "<?xml", 5) == 0) {
            p = skipDeclaration(p);
            if (!p)
                return false;
        } else if (strncmp(p, "<!--", 4) == 0) {
            p = skipPast(p + 4, "-->");
        } else if (strncmp(p, "<![CDATA[", 9) == 0) {
            p = skipPast(p + 9, "]]>");
        } else if (p[1] == '/') {
            depth = depth > 0 ? depth - 1 : 0;
            p = skipPast(p + 2, ">");
        } else if (!startsName(p[1])) {
            // "<!", "<?" and the like run to the first '>', quotes or not.
            p = skipPast(p + 1, ">");
        } else {
            if (++depth > maxDepth)
                return false;
            bool selfClosed = false;
            p = skipTag(p + 1, &selfClosed);
            if (selfClosed)
                --depth;
        }
    }
    return true;
}

bool pvXmlReadFile(const char* path, std::string* text)
{
    FILE* file = kvfOpenReadable(path);
    if (!file)
        return false;
    char chunk[4096];
    size_t count;
    while ((count = fread(chunk, 1, sizeof(chunk), file)) > 0 && text->size() <= maxFileSize)
        text->append(chunk, count);
    const bool complete = !ferror(file) && text->size() <= maxFileSize;
    fclose(file);
    return complete;
}

bool pvXmlParse(const std::string& text, TiXmlDocument* document)
{
    if (!pvXmlNestingWithin(text.c_str(), maxNesting)) {
        document->Parse("");
        return false;
    }
    std::string padded(text.c_str());
    padded.append(stepPadding, '\0');
    document->Parse(padded.c_str());
    return !document->Error();
}
