#pragma once

#include <QList>
#include <QString>

/// One line of the table: what, figure, and the reference of the same run that it is held against.
void PrintFigure(const QString& what, const QString& figure, const QString& reference = {});

double Median(QList<double> values);

/// Resident memory of this process in megabytes.
double ResidentMb();

/// Forgets the most memory that this process ever had.
void ForgetPeak();
/// The most resident memory since then, in megabytes.
double PeakMb();
/// The most that any child that has ended ever had.
double ChildrenPeakMb();

/// Time by a monotonic clock, in milliseconds.
double NowMs();

int BenchStill();
int BenchThumbnails();
int BenchFindings();
int BenchSheet();
int BenchSheetMemory();
int BenchBombs();
int BenchImport();
int BenchDelete();
int BenchStart(const QString& mode);
int BenchMemory(const QString& mode);
