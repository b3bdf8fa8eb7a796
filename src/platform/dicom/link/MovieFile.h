#pragma once

#include <QString>

#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcpxitem.h>

#include <memory>

/// A file of any content as an item of pixel data that reads it while it is written, and never holds it. A file of an
/// odd size gets a byte more, as the standard has it. Null for what is no regular file of less than 4 GB.
std::unique_ptr<DcmPixelItem> MovieItem(const QString& path);
