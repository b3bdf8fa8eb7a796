#include "platform/gstreamer/testpicture/TestPictureScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <mutex>

namespace {
struct Colour
{
    float red;
    float green;
    float blue;
};

float SmoothStep(float from, float to, float value)
{
    const float t = std::clamp((value - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

float Glint(float x, float y, float centreX, float centreY, float size)
{
    const float dx = (x - centreX) / size;
    const float dy = (y - centreY) / (size * 0.45f);
    return std::exp(-(dx * dx + dy * dy));
}

// x and y run from about -1 to 1 over the height of the scene.
Colour SceneColour(float x, float y)
{
    const float centreX = x + 0.10f;
    const float centreY = y - 0.06f;
    const float angle = std::atan2(centreY, centreX);
    const float uneven = 1 + 0.09f * std::sin(3 * angle + 0.7f) + 0.04f * std::sin(5 * angle);
    const float radius = std::sqrt(centreX * centreX + centreY * centreY) * uneven;

    // Depth along the tunnel; its folds come closer together with the distance, and none is a full ring.
    const float depth = 1 / (radius + 0.16f);
    const float fold = std::sin(depth * 6.5f + 0.8f * std::sin(2 * angle) + 0.4f * std::sin(3 * angle + 1));
    const float light = SmoothStep(0.03f, 0.62f, radius) * (1 - 0.34f * SmoothStep(0.7f, 1.9f, radius));
    const float shade = light * (0.84f + 0.16f * fold * SmoothStep(0.04f, 0.25f, radius));

    const float strand =
        std::sin(angle * 4 + std::sin(radius * 6 + 1) * 0.5f) + 0.3f * std::sin(angle * 9 + radius * 11);
    const float vessel = 0.07f * std::exp(-strand * strand * 700) * SmoothStep(0.3f, 0.7f, radius) +
                         0.04f * std::exp(-std::pow(strand - 0.55f, 2.0f) * 1500) * SmoothStep(0.45f, 0.9f, radius);
    const float mottle = 0.012f * std::sin(x * 23 + 3 * std::sin(y * 9)) * std::sin(y * 19 + 2 * std::sin(x * 11));
    const float wet = 0.50f * Glint(x, y, 0.52f, -0.42f, 0.045f) + 0.40f * Glint(x, y, -0.66f, 0.38f, 0.06f) +
                      0.30f * Glint(x, y, 0.24f, 0.58f, 0.04f) + 0.06f * Glint(x, y, -0.35f, -0.5f, 0.5f);
    return {0.06f + 0.88f * shade + mottle - 0.3f * vessel + wet, 0.015f + 0.56f * shade + mottle - vessel + wet,
            0.025f + 0.53f * shade + mottle - 0.8f * vessel + wet};
}

std::uint8_t Byte(float value)
{
    return std::uint8_t(std::lround(std::clamp(value, 0.0f, 255.0f)));
}

std::shared_ptr<const TestPictureScene> DrawScene(int width, int height)
{
    auto scene = std::make_shared<TestPictureScene>();
    scene->width = width;
    scene->height = height;
    const int halfWidth = width / 2;
    const int halfHeight = height / 2;
    scene->luma.resize(std::size_t(width) * height);
    scene->blue.resize(std::size_t(halfWidth) * halfHeight);
    scene->red.resize(scene->blue.size());

    // One colour for each block of four pixels; the luma is then smoothed between the blocks.
    std::vector<float> blockLuma(scene->blue.size());
    for (int y = 0; y < halfHeight; ++y) {
        for (int x = 0; x < halfWidth; ++x) {
            const Colour colour = SceneColour(float(2 * x - halfWidth) / float(halfHeight),
                                              float(2 * y - halfHeight) / float(halfHeight));
            const float luma = 0.299f * colour.red + 0.587f * colour.green + 0.114f * colour.blue;
            const std::size_t at = std::size_t(y) * halfWidth + x;
            blockLuma[at] = 255 * luma;
            scene->blue[at] = Byte(128 + 255 * 0.564f * (colour.blue - luma));
            scene->red[at] = Byte(128 + 255 * 0.713f * (colour.red - luma));
        }
    }
    for (int y = 0; y < height; ++y) {
        const float* upper = &blockLuma[std::size_t(y / 2) * halfWidth];
        const float* lower = &blockLuma[std::size_t(std::min(y / 2 + y % 2, halfHeight - 1)) * halfWidth];
        std::uint8_t* row = &scene->luma[std::size_t(y) * width];
        for (int x = 0; x < halfWidth; ++x) {
            const int next = std::min(x + 1, halfWidth - 1);
            // A trace of grain keeps wide soft areas from banding.
            const unsigned hash = (unsigned(x) * 73856093u) ^ (unsigned(y) * 19349663u);
            const float grain = float((hash ^ (hash >> 13)) % 5) - 2;
            row[2 * x] = Byte((upper[x] + lower[x]) / 2 + grain);
            row[2 * x + 1] = Byte((upper[x] + lower[x] + upper[next] + lower[next]) / 4 - grain);
        }
    }
    return scene;
}
} // namespace

std::shared_ptr<const TestPictureScene> TestSceneFor(int pictureWidth, int pictureHeight)
{
    static std::mutex mutex;
    static std::map<std::pair<int, int>, std::shared_ptr<const TestPictureScene>> scenes;
    const std::lock_guard lock(mutex);
    auto& scene = scenes[{pictureWidth, pictureHeight}];
    if (!scene)
        scene = DrawScene(pictureWidth + TestSceneMargin, pictureHeight + TestSceneMargin);
    return scene;
}

std::shared_ptr<const TestPictureScene> AdjustedScene(const TestPictureScene& scene, int brightness, int contrast)
{
    std::array<std::uint8_t, 256> table;
    for (int value = 0; value < 256; ++value)
        table[std::size_t(value)] = Byte((float(value) - 128) * float(contrast) / 100 + 128 + float(brightness));
    auto adjusted = std::make_shared<TestPictureScene>(scene);
    for (std::uint8_t& value : adjusted->luma)
        value = table[value];
    return adjusted;
}
