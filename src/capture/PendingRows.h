#pragma once

#include "capture/CaptureVisit.h"

#include <QList>

#include <functional>

/// Pictures whose file is in the capture directory, but whose rows the database has not taken yet. The list is kept in
/// the program's folder as well, so that it outlives the program.
class PendingRows
{
public:
    struct Entry
    {
        CaptureVisit visit;
        int number = 0;
        QString note; ///< Typed note that was to be stored with the picture; empty when there was none.
    };

    /// Reads what an earlier run has left. A list that can't be read is put aside under another name, not lost.
    PendingRows();

    bool IsEmpty() const { return m_entries.isEmpty(); }
    int Count() const { return static_cast<int>(m_entries.size()); }
    bool Holds(const CaptureVisit& visit, int number) const;
    void Add(const Entry& entry);

    /// Hands each entry to `write`, and drops it when that returns. Throws what `write` throws; the entry and those
    /// behind it then stay.
    void WriteAll(const std::function<void(const Entry&)>& write);

private:
    void Load();
    /// A list that can't be written still stands in memory.
    void Store() const;

    QList<Entry> m_entries;
};
