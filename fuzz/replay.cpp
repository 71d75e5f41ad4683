// Replays fuzz inputs without libFuzzer: every file of the folders (or the
// files) named on the command line is handed once to the target's entry
// point. Used by the test command to run the corpora under the sanitizers.
#include <dirent.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool readWhole(const std::string& path, std::vector<uint8_t>& bytes)
{
    FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return false;
    bytes.clear();
    uint8_t chunk[65536];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0)
        bytes.insert(bytes.end(), chunk, chunk + got);
    std::fclose(file);
    return true;
}

void listInputs(const std::string& path, std::vector<std::string>& inputs)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return;  // a missing crash folder is an empty one
    if (!S_ISDIR(info.st_mode)) {
        inputs.push_back(path);
        return;
    }
    DIR* dir = opendir(path.c_str());
    if (dir == nullptr)
        return;
    while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && name != "README.md")
            listInputs(path + "/" + name, inputs);
    }
    closedir(dir);
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> inputs;
    for (int i = 1; i < argc; i++)
        listInputs(argv[i], inputs);
    std::vector<uint8_t> bytes;
    for (const std::string& input : inputs) {
        if (!readWhole(input, bytes)) {
            std::fprintf(stderr, "cannot read %s\n", input.c_str());
            return 1;
        }
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::fprintf(stderr, "replayed %zu inputs\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
