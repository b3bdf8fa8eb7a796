#pragma once

#include <QString>

/// Who acts, in the record of access.
struct ActSource
{
    QString program;
    QString computer;
    QString user; ///< Linux user, with the one behind sudo: "root (kim)".
};
