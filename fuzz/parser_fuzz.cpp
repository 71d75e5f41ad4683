// The key/value parser on arbitrary file contents: open, strip comments,
// read every line both ways and look up keys of each kind.
#include <cstdint>

#include "foundation/kvfparser.h"
#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const char* path = "fuzz-input.txt";
    if (!writeFuzzInput(path, data, size))
        return 0;

    kvfParser parser;
    if (!kvfOpenParser(&parser, path))
        return 0;
    char line[KVF_MAX_LINE + 1];
    int number = 0;
    float real = 0.0f;
    kvfGetInt(&parser, "PEVRANO_windowX", &number);
    kvfGetFloat(&parser, "PEVRANO_farPlane", &real);
    kvfGetString(&parser, "PEVRANO_windowTitle", line);
    kvfStripComments(&parser, '#');
    while (kvfReadLine(&parser, line)) {}
    parser.position = 0;
    while (kvfReadCompactLine(&parser, line)) {}
    kvfCloseParser(&parser);
    return 0;
}
