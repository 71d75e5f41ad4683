// Test helpers: each case works in a scratch directory of its own and reads
// the engine's log back from there.
#ifndef PEVRANO_TESTS_SCRATCH_H
#define PEVRANO_TESTS_SCRATCH_H

#include <string>

namespace pvtest {

// Creates a fresh directory under the system's temporary folder and makes it
// the working directory; the previous one is restored on destruction.
class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
    std::string previous_;
};

// Whole contents of a file ("" when it cannot be read).
std::string readFile(const std::string& path);
// Writes a file, creating or truncating it.
void writeFile(const std::string& path, const std::string& contents);

// Closes the log the library opened at load and opens "pevrano_log.txt" anew
// in the current working directory, without echo to the console. Returns the
// length of what the new log holds right after opening (its start banner), so
// that logSince() returns only what the test itself caused.
class LogCapture {
public:
    LogCapture();
    // Everything written to the log after the start banner.
    std::string text() const;
    // The whole file, banner included.
    std::string whole() const;

private:
    std::string path_;
    size_t bannerLength_ = 0;
};

}  // namespace pvtest

#endif
