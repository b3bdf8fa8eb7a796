#pragma once

#include <QString>

#include <memory>

/// A picture number held by this station while it files the picture: a small file in the section's folder, created
/// exclusively, so that two stations on one visit never take the same number. Released at the end of the object's life.
class NumberClaim
{
public:
    /// A claim older than this was left by a station that died.
    static constexpr int LifeMs = 60000;

    /// Null when another station holds the number. A dead one is taken over. Throws PlatformError when the folder
    /// refuses.
    static std::unique_ptr<NumberClaim> Take(const QString& path);

    ~NumberClaim();
    NumberClaim(const NumberClaim&) = delete;
    NumberClaim& operator=(const NumberClaim&) = delete;

private:
    explicit NumberClaim(const QString& path) : m_path(path) {}

    QString m_path;
};
