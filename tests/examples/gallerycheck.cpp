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

// Mean of each channel, and the spread of luminance, over a rectangle given
// as fractions, in pixels kept inside the picture and at least one large.
struct Stats {
    double mean[3] = {0, 0, 0};
    double luminance = 0, spread = 0;
};

Stats measure(const Picture& picture, char** fractions)
{
    const int w = int(picture.image.width), h = int(picture.image.height);
    const auto edge = [](double fraction, int size) { return std::clamp(int(fraction * size), 0, size - 1); };
    const double fx = std::atof(fractions[0]), fy = std::atof(fractions[1]);
    const int x0 = edge(fx, w), y0 = edge(fy, h);
    const int x1 = std::max(x0 + 1, edge(fx + std::atof(fractions[2]), w));
    const int y1 = std::max(y0 + 1, edge(fy + std::atof(fractions[3]), h));
    const double share = 1.0 / ((x1 - x0) * (y1 - y0));
    Stats stats;
    double squares = 0;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x) {
            const unsigned char* p = &picture.rgb[(size_t(y) * w + x) * 3];
            const double luminance = 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
            for (int c = 0; c < 3; ++c)
                stats.mean[c] += p[c] * share;
            stats.luminance += luminance * share;
            squares += luminance * luminance * share;
        }
    stats.spread = std::sqrt(std::max(0.0, squares - stats.luminance * stats.luminance));
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
        const Stats s = measure(first, argv + 3);
        bool near = true;
        for (int c = 0; c < 3; ++c)
            near = near && std::fabs(s.mean[c] - std::atof(argv[7 + c])) <= 12;
        return verdict(near, "mean colour " + std::to_string(int(s.mean[0])) + " " +
                                 std::to_string(int(s.mean[1])) + " " + std::to_string(int(s.mean[2])));
    }
    if (property == "brighter" && argc == 11) {
        const double lit = measure(first, argv + 3).luminance;
        const double dark = measure(first, argv + 7).luminance;
        return verdict(lit >= dark + 20,
                       "luminance " + std::to_string(lit) + " against " + std::to_string(dark));
    }
    if (property == "varied" && argc == 7) {
        const double spread = measure(first, argv + 3).spread;
        return verdict(spread >= 12, "luminance spread " + std::to_string(spread));
    }
    if (property == "differs" && argc == 8) {
        if (!read(argv[3], second) || second.image.width != first.image.width ||
            second.image.height != first.image.height)
            return verdict(false, std::string("cannot compare with ") + argv[3]);
        for (size_t i = 0; i < first.rgb.size(); ++i)
            first.rgb[i] = std::abs(first.rgb[i] - second.rgb[i]);
        const Stats s = measure(first, argv + 4);
        const double change = (s.mean[0] + s.mean[1] + s.mean[2]) / 3;
        return verdict(change >= 3, "mean change " + std::to_string(change));
    }
    return verdict(false, "unknown property or wrong arguments; usage: gallerycheck "
                          "colour|brighter|varied|differs A.png [B.png] rectangles...");
}

}  // namespace

int main(int argc, char** argv) { return argc > 2 && check(argv[1], argc, argv) ? 0 : 1; }
