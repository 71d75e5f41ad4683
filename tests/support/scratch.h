// A scratch working directory of its own for each case, and whole files
// read and written at once.
#ifndef PEVRANO_TESTS_SUPPORT_SCRATCH_H
#define PEVRANO_TESTS_SUPPORT_SCRATCH_H

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
}  // namespace pvtest

#endif
