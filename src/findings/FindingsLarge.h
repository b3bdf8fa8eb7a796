#pragma once

#include "visit/Visit.h"

#include <QList>
#include <QObject>

#include <array>
#include <optional>
#include <utility>

class ImagXpress;
class LargePicture;
class LensButton;
class QWidget;
struct FindingsRecordFields;

/// A lens over each picture of the findings screen, and the pictures large: over the screen's lower part, or over
/// another screen.
class FindingsLarge : public QObject
{
    Q_OBJECT

public:
    FindingsLarge(QWidget& form, const std::array<ImagXpress*, 6>& slots);

    /// The record's pictures of these numbers stand in the slots, from the first on. What was large before goes.
    void TakeShown(const FindingsRecordFields& record, const QList<int>& numbers);
    void Close();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Open(size_t slot);

    const std::array<ImagXpress*, 6> m_slots;
    std::array<LensButton*, 6> m_lenses = {};
    LargePicture* const m_view; ///< The form's.
    std::optional<Visit> m_visit;
    QList<std::pair<int, QString>> m_shown; ///< Number and path.
};
