// A second reader of the log: every message written to the log file is also
// handed to one function set by the caller (tests, tools).
#ifndef PEVRANO_FOUNDATION_KVFLOGSINK_H
#define PEVRANO_FOUNDATION_KVFLOGSINK_H

// Receives the message as written to the text log: formatted and cut to 1023
// characters, before any HTML expansion.
typedef void (*KVFLOGSINK)(const char* message, void* context);

// Sets the function (null for none) and the context passed back to it.
void kvfSetLogSink(KVFLOGSINK sink, void* context);

#endif
