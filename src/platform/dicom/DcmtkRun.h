#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <stop_token>

/// What one of dcmtk's programs did.
struct DcmtkResult
{
    bool succeeded = false; ///< It ended by itself, with 0.
    QStringList lines;      ///< What it told, in its own words.
    QString fault;          ///< What went wrong with the program itself, for the operator; empty when nothing did.
};

/// Runs the program in that folder as a child process without a shell, and waits for it. The child ends with this
/// process, when a stop is asked for, and when it says nothing for longer than `longestSilenceMs`.
DcmtkResult RunDcmtk(const QString& program, const QStringList& arguments, const QString& folder, int longestSilenceMs,
                     const std::stop_token& stop);
