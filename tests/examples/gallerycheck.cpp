// Checks what a gallery example promises on its screenshot, by computed
// properties rather than stored images. Rectangles are fractions of the
// picture (x y width height, y downwards), so any window size works.
//   gallerycheck colour   A.png x y w h r g b   mean colour within 12 of r g b
//   gallerycheck brighter A.png RECT1 RECT2     RECT1 at least 20 brighter than RECT2
//   gallerycheck varied   A.png RECT            luminance spread of at least 12 (texture, text)
//   gallerycheck differs  A.png B.png RECT      mean change of at least 3 per channel
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Picture {
    png_image image {};
    std::vector<unsigned char> rgb;
};

bool read(const char* file, Picture& picture)
{
    picture.image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&picture.image, file))
        return false;
    picture.image.format = PNG_FORMAT_RGB;
    picture.rgb.resize(PNG_IMAGE_SIZE(picture.image));
    return png_image_finish_read(&picture.image, nullptr, picture.rgb.data(), 0, nullptr);
}

struct Area {
    int x0, y0, x1, y1;
};

// The rectangle in pixels, kept inside the picture and at least one pixel large.
Area area(const Picture& picture, char** fractions)
{
    const int w = int(picture.image.width), h = int(picture.image.height);
    const double x = std::atof(fractions[0]), y = std::atof(fractions[1]);
    const auto inside = [](double at, int size) { return std::clamp(int(at * size), 0, size - 1); };
    const Area a {inside(x, w), inside(y, h), inside(x + std::atof(fractions[2]), w),
                  inside(y + std::atof(fractions[3]), h)};
    return {a.x0, a.y0, std::max(a.x1, a.x0 + 1), std::max(a.y1, a.y0 + 1)};
}

// Mean of each channel, and the spread of luminance, over an area.
struct Stats {
    double mean[3] = {0, 0, 0};
    double luminance = 0, spread = 0;
};

Stats measure(const Picture& picture, const Area& a)
{
    Stats stats;
    double squares = 0;
    int count = 0;
    for (int y = a.y0; y < a.y1; ++y)
        for (int x = a.x0; x < a.x1; ++x) {
            const unsigned char* p = &picture.rgb[(size_t(y) * picture.image.width + x) * 3];
            const double luminance = 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
            for (int c = 0; c < 3; ++c)
                stats.mean[c] += p[c];
            stats.luminance += luminance;
            squares += luminance * luminance;
            ++count;
        }
    for (double& m : stats.mean)
        m /= count;
    stats.luminance /= count;
    stats.spread = std::sqrt(squares / count - stats.luminance * stats.luminance);
    return stats;
}

bool verdict(bool passed, const std::string& what)
{
    std::printf("%s: %s\n", passed ? "ok" : "FAILED", what.c_str());
    return passed;
}

bool check(const std::string& property, int argc, char** argv)
{
    Picture first, second;
    if (!read(argv[2], first))
        return verdict(false, std::string("cannot read ") + argv[2]);
    if (property == "colour" && argc == 10) {
        const Stats s = measure(first, area(first, argv + 3));
        bool near = true;
        for (int c = 0; c < 3; ++c)
            near = near && std::fabs(s.mean[c] - std::atof(argv[7 + c])) <= 12;
        return verdict(near, "mean colour " + std::to_string(int(s.mean[0])) + " " +
                                 std::to_string(int(s.mean[1])) + " " + std::to_string(int(s.mean[2])));
    }
    if (property == "brighter" && argc == 11) {
        const double lit = measure(first, area(first, argv + 3)).luminance;
        const double dark = measure(first, area(first, argv + 7)).luminance;
        return verdict(lit >= dark + 20,
                       "luminance " + std::to_string(lit) + " against " + std::to_string(dark));
    }
    if (property == "varied" && argc == 7) {
        const double spread = measure(first, area(first, argv + 3)).spread;
        return verdict(spread >= 12, "luminance spread " + std::to_string(spread));
    }
    if (property == "differs" && argc == 8) {
        if (!read(argv[3], second) || second.image.width != first.image.width ||
            second.image.height != first.image.height)
            return verdict(false, std::string("cannot compare with ") + argv[3]);
        for (size_t i = 0; i < first.rgb.size(); ++i)
            first.rgb[i] = std::abs(first.rgb[i] - second.rgb[i]);
        const Stats s = measure(first, area(first, argv + 4));
        const double change = (s.mean[0] + s.mean[1] + s.mean[2]) / 3;
        return verdict(change >= 3, "mean change " + std::to_string(change));
    }
    return verdict(false, "unknown property or wrong arguments");
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fprintf(stderr,
                     "usage: gallerycheck colour|brighter|varied|differs A.png [B.png] rectangles...\n");
        return 2;
    }
    return check(argv[1], argc, argv) ? 0 : 1;
}
