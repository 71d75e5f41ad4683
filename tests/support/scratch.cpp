#include "support/scratch.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits.h>
#include <sstream>
#include <unistd.h>

namespace pvtest {

ScratchDir::ScratchDir()
{
    char cwd[PATH_MAX];
    if (getcwd(cwd, sizeof cwd))
        previous_ = cwd;
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/pevrano-test-XXXXXX";
    char* made = mkdtemp(&pattern[0]);
    if (made && chdir(made) == 0)
        path_ = made;
}

ScratchDir::~ScratchDir()
{
    if (!previous_.empty() && chdir(previous_.c_str()) != 0)
        perror("chdir");
    if (!path_.empty()) {
        std::string command = "rm -rf '" + path_ + "'";
        if (system(command.c_str()) != 0)
            perror("rm");
    }
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void writeFile(const std::string& path, const std::string& contents)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << contents;
}

}  // namespace pvtest
