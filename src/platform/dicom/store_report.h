#pragma once

#include "contracts/dicom.h"

/// What storescu has told of each file, by the lines of its verbose report: only a file with the server's answer of
/// success, or of a warning, is accepted. Its exit code says nothing of single files.
QList<DicomOutcome> OutcomesOfReport(const QStringList& lines, const QStringList& files);

/// Why dcmtk's program couldn't reach its peer: a Korean sentence, and its own line, shortened, behind it.
QString PeerReason(const QStringList& lines);
