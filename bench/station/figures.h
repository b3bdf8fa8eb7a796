#pragma once

#include <QList>
#include <QString>

/// One line of the table: what, figure, and the reference of the same run that it is held against.
void PrintFigure(const QString& what, const QString& figure, const QString& reference = {});

double Median(QList<double> values);

/// Resident memory of this process in megabytes.
double ResidentMb();

/// Time by a monotonic clock, in milliseconds.
double NowMs();

int BenchStill();
int BenchThumbnails();
int BenchFindings();
int BenchStart(const QString& mode);
int BenchMemory(const QString& mode);
