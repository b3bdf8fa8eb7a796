#pragma once

#include <QSize>

#include <array>

struct FindingsRecordFields;
struct PrintedPages;
class ImagXpress;
class QWidget;

/// The room of a picture on the page, at the resolution that it is printed at.
QSize PrintedPictureSize();

/// With the pictures that the controls hold on the first. Record and controls have to outlive them.
PrintedPages PagesOf(const FindingsRecordFields& record, const std::array<ImagXpress*, 6>& pictures);

/// Prints them, each page a job of its own. A long report shows its progress over `owner` and can be broken off
/// between two pages. Throws PlatformError.
void PrintFindingsPages(const PrintedPages& pages, QWidget& owner);
