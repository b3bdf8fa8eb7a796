#pragma once

#include "records/picture_sums.h"
#include "visit/Visit.h"

#include <QDateTime>

#include <optional>

/// How a picture came to be taken.
enum class PictureOrigin {
    Press,
    Foot,
    Import,
    Restored, ///< From the deleted ones: nobody is going to store its visit.
};

/// How far a picture has come.
enum class PictureState {
    Taken,    ///< On its way to this machine's disk and to the share.
    Local,    ///< Safe on this machine's disk; it waits for the share.
    OnShare,  ///< It stands under its number; its rows are to follow.
    SetAside, ///< The same, and the server has refused the rows.
    Deleted,  ///< By the operator: once it stands under a number it goes to the deleted pictures.
};

/// The operator's own text for a visit, and the stored note that it was begun from, as `RawNote` gives it.
struct TypedNote
{
    QString text;
    QString base;

    bool operator==(const TypedNote&) const = default;
};

/// A picture from the press until its rows are in.
struct PictureRecord
{
    QString id; ///< Never changes, and is unlike that of any other picture.
    Visit visit;
    PictureState state = PictureState::Taken;
    int number = 0; ///< 0 until it has one.
    PictureOrigin origin = PictureOrigin::Press;
    QDateTime takenAt = {};
    QString reason = {};                ///< Why it is set aside.
    std::optional<TypedNote> note = {}; ///< To be stored with it, when there is one.
    QString detail = {};                ///< For the record of its filing.
    PictureSum sum = {};                ///< Of its content as it came from the encoder; unknown before that.

    bool isFromEarlierRun = false;
    // Of this run alone.
    bool waits = false;      ///< It has waited for so long that the screen shows it.
    bool isUnderWay = false; ///< Its rows have been handed over, and no answer has come.
    bool hasRows = false;    ///< They are in, and its sum is to follow.

    bool IsDeleted() const { return state == PictureState::Deleted; }
    /// Its rows are still to come in.
    bool WantsRows() const { return number > 0 && !IsDeleted() && !hasRows; }
};
