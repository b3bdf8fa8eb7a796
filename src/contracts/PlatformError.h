#pragma once

#include <QString>

#include <exception>

/// A fault of the outside world: a device, a file, the database. The text is for the operator, in Korean.
/// Thrown by adapters; caught by `Guarded`, or by a routine that has an answer of its own.
class PlatformError : public std::exception
{
public:
    explicit PlatformError(QString text) : m_text(std::move(text)), m_utf8(m_text.toUtf8()) {}

    const QString& Text() const { return m_text; }
    const char* what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_text;
    QByteArray m_utf8;
};

/// The change has been made all the same: the file stands under its final name, but the disk has reported a fault on
/// the way. Who catches it goes on as after a success, and tells the text.
class StoredWithFault : public PlatformError
{
public:
    using PlatformError::PlatformError;
};

/// What is asked for can't be reached for the time being: the same may pass later.
class Away : public PlatformError
{
public:
    using PlatformError::PlatformError;
};

/// The database can't be reached, or takes no statements for the time being: the same statement may pass later. Any
/// other fault of a statement is the server's refusal.
class DatabaseAway : public Away
{
public:
    using Away::Away;
};

/// The statement is for a table that isn't there, or for more of it than the account may.
class TableRefused : public PlatformError
{
public:
    using PlatformError::PlatformError;
};

/// A file or a folder can't be reached because the share that holds it doesn't answer, or the operator has given up
/// waiting for it.
class FilesAway : public Away
{
public:
    using Away::Away;
};
