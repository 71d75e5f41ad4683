// Records the GL calls a test causes. The test executable defines the GL
// entry points the engine calls (executables are linked with -rdynamic, so the
// library's calls bind to these definitions); each one forwards to the real
// GL function and, while a recorder is started, appends a text form of the
// call: "glEnable(GL_BLEND)", "glColor4x(65536,0,32768,65536)",
// "glLightxv(GL_LIGHT0,GL_AMBIENT,{0,0,0,65536})". Enumerations are written
// by name (hex when unknown), fixed-point and integer values in decimal,
// arrays in braces; data pointers are left out. Only the entry points the
// engine calls are interposed: a class that calls a new one adds it with one
// PV_INTERPOSE line in glrecorder.cpp (and its enumerations to the name table).
#ifndef PEVRANO_TESTS_SUPPORT_GLRECORDER_H
#define PEVRANO_TESTS_SUPPORT_GLRECORDER_H

#include <cstddef>
#include <string>
#include <vector>

namespace pvtest {

class GlRecorder {
public:
    GlRecorder() = default;
    // Stops recording if this recorder is the active one.
    ~GlRecorder();
    GlRecorder(const GlRecorder&) = delete;
    GlRecorder& operator=(const GlRecorder&) = delete;

    // Forgets earlier calls and records from now on (one recorder at a time:
    // starting another one stops this).
    void start();
    void stop();

    const std::vector<std::string>& calls() const { return calls_; }
    // Calls of the function with this name ("glEnable").
    std::vector<std::string> filter(const std::string& function) const;
    // Calls of any of these functions, in recorded order.
    std::vector<std::string> filter(const std::vector<std::string>& functions) const;
    size_t count(const std::string& function) const { return filter(function).size(); }
    // Number of calls whose whole text equals call ("glEnable(GL_BLEND)").
    size_t countCall(const std::string& call) const;
    // All calls, one per line (for failure messages).
    std::string text() const;

    // Function name of a recorded call: the text before "(".
    static std::string functionOf(const std::string& call);
    // Every decimal number among the call's arguments, in order (enumeration
    // names and hex values are skipped): for tolerance comparisons.
    static std::vector<long long> numbersOf(const std::string& call);

    // Used by the interposed entry points.
    void append(std::string call) { calls_.push_back(std::move(call)); }

private:
    std::vector<std::string> calls_;
};

}  // namespace pvtest

#endif
