#pragma once

#include "platform/imaging/picture_content.h"

#include <stop_token>

class QFile;

/// Reading a picture file in a process of its own, with a limit on its memory and its time, and shut in as far as the
/// kernel can. Safe to call from any thread.
namespace confinedreader {

enum class Outcome { Read, Unreadable, TooLarge, TooLargeJpeg, TooSlow, Unconfinable, Stopped };

struct Answer
{
    Outcome outcome = Outcome::Unreadable;
    QImage picture;
    bool cut = false; ///< The file's data end early: the picture shows what there is.
    QSize size;       ///< That the file names, of a picture that is too large or shown at a lower scale; else empty.
};

struct Upright
{
    Outcome outcome = Outcome::Unreadable;
    QByteArray turned; ///< The JPEG, turned upright; empty where the one that was read stands so.
    bool cut = false;  ///< The file's data end early; then nothing has been turned.
    QSize size;        ///< Of the upright picture, or that the file names when it is too large.
};

/// A file of memory for what is in none; false when there can't be one.
bool OpenMemory(QFile& file, const QByteArray& content);
/// The reader's program: beside this one in its build folder, or under the prefix that both were installed to. Empty
/// when it isn't there.
QString ReaderProgram();
/// Reads the regular file behind an open descriptor from its start, in a format that Qt knows.
Answer ReadKnown(int descriptor, const picturecontent::Wish& wish, const std::stop_token& stop = {});
/// The same in the formats that Qt doesn't know, at full size.
Answer ReadForeign(int descriptor);
/// Looks a JPEG through to its end, and turns it as its orientation tag says: see MakeUpright.
Upright TurnUpright(int descriptor, const std::stop_token& stop);

} // namespace confinedreader
