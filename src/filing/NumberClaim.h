#pragma once

#include "visit/Visit.h"

#include <QString>

#include <memory>
#include <optional>

/// A picture number held by this station while it files the picture: a small file in the section's folder, created
/// exclusively, so that two stations on one visit never take the same number. It stands until the picture's rows are
/// in; the object's end releases it, unless it was kept for rows that wait.
class NumberClaim
{
public:
    /// What stands in a claim.
    struct Facts
    {
        QString holder; ///< Mark of the process.
        QString yuhyung;
        QString imageExt;
        QString picture; ///< Identity of the picture that the number is for.
    };

    /// Null when the number is claimed already, by whomever. Throws PlatformError when the folder refuses. `picture` is
    /// unlike that of any other picture.
    static std::unique_ptr<NumberClaim> Take(const Visit& visit, int number, const QString& picture);
    /// The number under which a picture of an earlier run stands whose claim hasn't been released; nothing when there
    /// is none. A number that was claimed for it, and under which it didn't come to stand, is free again.
    static std::optional<int> NumberOf(const Visit& visit, const QString& picture);
    /// Lets go of a claim that was kept. One that can't be deleted is left to a later start.
    static void Release(const Visit& visit, int number);
    /// A picture stands under that number, in whichever of the two extensions.
    static bool IsPictureThere(const Visit& visit, int number) { return PicturesThere(visit, number) > 0; }
    /// How many there are, one of each extension.
    static int PicturesThere(Visit visit, int number);
    static bool Stands(const Visit& visit, int number);
    /// Empty facts for a claim that holds none; nothing when it can't be read, or has gone.
    static std::optional<Facts> Read(const QString& path);

    ~NumberClaim();
    NumberClaim(const NumberClaim&) = delete;
    NumberClaim& operator=(const NumberClaim&) = delete;

    /// The rows wait: the claim stays when the object goes.
    void Keep() { m_path.clear(); }

private:
    explicit NumberClaim(const QString& path) : m_path(path) {}

    QString m_path;
};
