#pragma once

#include <QByteArray>
#include <QSize>

#include <optional>

/// A JPEG as it is to be seen without a look at its orientation tag.
struct UprightJpeg
{
    QSize size;             ///< Of the upright picture.
    QByteArray turned = {}; ///< The file's content; empty where the one that was read stands upright.
    bool cut = false;       ///< The file's data end early; then nothing is turned.
    bool large = false;     ///< Beyond the limit.
};

/// The JPEG behind an open descriptor, turned without a loss where its sides are whole blocks, else coded anew in a
/// quality that shows none. Nothing for what is no JPEG.
std::optional<UprightJpeg> MakeUpright(int descriptor);
