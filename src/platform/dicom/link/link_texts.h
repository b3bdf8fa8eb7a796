#pragma once

#include <QByteArray>

/// Texts between dcmtk's memory and a message's.
namespace linktexts {

/// Bounded, whoever wrote it; empty for none.
QByteArray Bounded(const char* text);
/// Into an array of that size, which ends with a zero.
void Copy(char* target, size_t size, const QByteArray& text);

} // namespace linktexts
