#pragma once

#include <QString>
#include <QStringList>

#include <stop_token>

/// What one of dcmtk's programs did.
struct DcmtkResult
{
    bool succeeded = false; ///< It ended by itself, with 0.
    QStringList lines;      ///< What it told, in its own words, as far as the limit lets it.
    QString fault;          ///< What went wrong with the program itself, for the operator; empty when nothing did.
};

/// Runs the program in that folder, and waits for it. It ends when a stop is asked for, when it says nothing for longer
/// than `longestSilenceMs`, and when it says more, takes more memory or runs longer than any of them has to.
DcmtkResult RunDcmtk(const QString& program, const QStringList& arguments, const QString& folder, int longestSilenceMs,
                     const std::stop_token& stop);
