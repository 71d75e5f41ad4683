/// \file
/// Key/value text file parser: the whole file is held in one counted block and
/// lookups of "key<separator>value" lines search it from the start.
#ifndef PEVRANO_FOUNDATION_KVFPARSER_H
#define PEVRANO_FOUNDATION_KVFPARSER_H

/// Longest line a reader or lookup handles, terminator excluded; line buffers
/// given to kvfReadLine, kvfReadCompactLine and kvfGetString hold 256 bytes.
#define KVF_MAX_LINE 255

/// An open parser; owned by the caller, closed while buffer is null.
struct kvfParser {
    char* buffer = nullptr;  ///< file content plus a terminating zero byte
    int size = 0;  ///< content size in bytes
    int position = 0;  ///< where the next line read starts
};

/// Reads the whole file at path into the parser; false, parser left closed,
/// when the file cannot be read.
bool kvfOpenParser(kvfParser* parser, const char* path);
/// Releases the buffer; false when the parser was not open.
bool kvfCloseParser(kvfParser* parser);
/// Blanks every comment, from the mark to the line end; true if one was found.
bool kvfStripComments(kvfParser* parser, char mark);
/// Copies the next line (up to 255 characters) into line; false at the end.
bool kvfReadLine(kvfParser* parser, char* line);
/// As kvfReadLine, with blanks and tabs removed.
bool kvfReadCompactLine(kvfParser* parser, char* line);
/// Lookups: the first compact line containing key gives the value, read from
/// one character after the key. False (value untouched) if no line has it.
///@{
bool kvfGetInt(const kvfParser* parser, const char* key, int* value);
bool kvfGetFloat(const kvfParser* parser, const char* key, float* value);
///@}
/// The text between the first and last double quote of the value; false (raw
/// value text copied) when there is no such pair. value holds 256 bytes.
bool kvfGetString(const kvfParser* parser, const char* key, char* value);

#endif
