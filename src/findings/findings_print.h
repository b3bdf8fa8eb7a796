#pragma once

#include <QSize>

#include <array>

struct FindingsRecordFields;
class ImagXpress;
class QWidget;

/// The room of a picture on the page, at the resolution that it is printed at.
QSize PrintedPictureSize();

/// Prints a record, each page a job of its own, with the pictures that the controls hold on the first. A long report
/// shows its progress over `owner` and can be broken off between two pages. Throws PlatformError.
void PrintFindingsPages(const FindingsRecordFields& record, const std::array<ImagXpress*, 6>& pictures, QWidget& owner);
