// pevrano-convert: converts a model that Assimp reads (glTF 2.0, Collada,
// DirectX X, OBJ, FBX, 3DS, MD5, ...) into a PVE scene file, TGA textures and
// one PVA file per animation.
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "engineconsole.h"
#include "modelconverter.h"

namespace {

const char usage[] = "usage: pevrano-convert [options] <model> <output.pve>\n"
                     "\n"
                     "Converts a model into a PVE scene file. Textures are written beside it as\n"
                     "<output>_<n>.tga, and every animation as <output>_<n>_<name>.pva.\n"
                     "\n"
                     "options:\n"
                     "  --fps <n>           frame rate of the animation files (1 to 1000, default 30)\n"
                     "  --texture-size <n>  largest side of a converted texture (1 to 256, default 256)\n"
                     "  --scale <factor>    scales the whole model (default 1)\n"
                     "  --fit <size>        scales the whole model so that its farthest vertex lies\n"
                     "                      <size> units from the origin (instead of --scale)\n"
                     "  --memory-limit <mb> most memory the conversion may take, in megabytes (64 to\n"
                     "                      1048576, default 4096)\n"
                     "  --help              show this text\n";

// Assimp trusts the counts a file gives, and a damaged file can make it ask
// for more memory than the machine has. The converter caps its own address
// space, so that such a request fails at once with std::bad_alloc. Under
// AddressSanitizer, which reserves terabytes of address space for itself,
// no cap is set.
#if defined(__SANITIZE_ADDRESS__)
const bool canLimitMemory = false;
#else
const bool canLimitMemory = true;
#endif

void limitMemory(int megabytes)
{
    const rlim_t bytes = rlim_t(megabytes) << 20;
    const rlimit limit = {bytes, bytes};
    if (canLimitMemory && setrlimit(RLIMIT_AS, &limit) != 0)
        std::fprintf(stderr, "pevrano-convert: warning: the memory limit cannot be set\n");
}

std::string memoryLimitReached(int megabytes)
{
    return "the conversion needs more than its memory limit of " + std::to_string(megabytes) +
           " MB (--memory-limit)";
}

bool readNumber(const char* text, int lowest, int highest, int& value)
{
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (!*text || *end || number < lowest || number > highest)
        return false;
    value = static_cast<int>(number);
    return true;
}

bool readFactor(const char* text, float& value)
{
    char* end = nullptr;
    const float number = std::strtof(text, &end);
    if (!*text || *end || !(number >= 1e-6f && number <= 1e6f))
        return false;
    value = number;
    return true;
}

// 0 when the options are understood, else the exit status to return.
int parseOptions(int argc, char** argv, ConvertOptions& options)
{
    int positional = 0;
    for (int i = 1; i < argc; i++) {
        const std::string argument = argv[i];
        if (argument == "--help") {
            std::fputs(usage, stdout);
            std::exit(0);
        }
        const bool hasValue = i + 1 < argc;
        if (argument == "--fps" && hasValue && readNumber(argv[i + 1], 1, 1000, options.framesPerSecond)) {
            i++;
        } else if (argument == "--texture-size" && hasValue &&
                   readNumber(argv[i + 1], 1, 256, options.textureSize)) {
            i++;
        } else if (argument == "--memory-limit" && hasValue &&
                   readNumber(argv[i + 1], 64, 1048576, options.memoryLimit)) {
            i++;
        } else if (argument == "--scale" && hasValue && readFactor(argv[i + 1], options.scale)) {
            i++;
        } else if (argument == "--fit" && hasValue && readFactor(argv[i + 1], options.fitRadius)) {
            i++;
        } else if (argument.compare(0, 2, "--") != 0 && positional < 2) {
            (positional++ == 0 ? options.input : options.output) = argument;
        } else {
            std::fprintf(stderr, "pevrano-convert: bad argument '%s'\n%s", argv[i], usage);
            return 2;
        }
    }
    if (positional != 2) {
        std::fputs(usage, stderr);
        return 2;
    }
    return 0;
}

int convertModel(const ConvertOptions& options)
{
    Assimp::Importer importer;
    std::string error;
    const aiScene* scene = ModelConverter::importModel(importer, options.input, error);
    if (!scene) {
        // Assimp catches the allocation failure and keeps its text.
        if (error == std::bad_alloc().what())
            error = memoryLimitReached(options.memoryLimit);
        std::fprintf(stderr, "pevrano-convert: cannot read '%s': %s\n", options.input.c_str(), error.c_str());
        return 1;
    }
    ModelConverter converter(scene, options);
    const bool converted = converter.convert(error);
    for (const std::string& notice : converter.notices())
        std::fprintf(stderr, "pevrano-convert: warning: %s\n", notice.c_str());
    if (!converted) {
        std::fprintf(stderr, "pevrano-convert: cannot convert '%s': %s\n", options.input.c_str(),
                     error.c_str());
        return 1;
    }
    for (const std::string& file : converter.writtenFiles())
        std::printf("wrote %s\n", file.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    // The engine's log stays in its file; the console is for the tool's own messages.
    EngineConsole::silence();
    ConvertOptions options;
    if (const int status = parseOptions(argc, argv, options))
        return status;
    limitMemory(options.memoryLimit);
    try {
        return convertModel(options);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "pevrano-convert: cannot convert '%s': %s\n", options.input.c_str(),
                     memoryLimitReached(options.memoryLimit).c_str());
        return 1;
    }
}
