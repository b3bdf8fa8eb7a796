#pragma once

#include <cstdint>
#include <memory>
#include <vector>

/// A still scene, larger than the picture, that the test picture wanders over: a softly lit tunnel as an endoscope
/// sees it. Planes are 4:2:0, full range.
struct TestPictureScene
{
    int width = 0; ///< Of the luma plane; even.
    int height = 0;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> blue; ///< Half as wide and high.
    std::vector<std::uint8_t> red;
};

/// The scene for a picture of that size, wider and higher by the margin. Drawn once for each size of the process.
std::shared_ptr<const TestPictureScene> TestSceneFor(int pictureWidth, int pictureHeight);

/// The same scene with its luma changed: `brightness` -100 to 100, `contrast` in percent.
std::shared_ptr<const TestPictureScene> AdjustedScene(const TestPictureScene& scene, int brightness, int contrast);

inline constexpr int TestSceneMargin = 128; // Pixels.
