#pragma once

#include <QDate>
#include <QList>
#include <QString>

/// Texts of a disc's pages: plain HTML 4 in UTF-8 with a byte order mark, without a script. Whatever a name, a section
/// or a note holds shows as the characters that it is.
namespace disc_pages {

struct Item
{
    QString path; ///< Of the file on the disc, from its root, with slashes.
    qint64 bytes = 0;
    QString small; ///< Name of the small picture beside the page; empty without one.
};

struct VisitPage
{
    QString chart;
    QString patient; ///< Name; empty where none may stand.
    QString ymd;
    QString section; ///< Empty for movies.
    QString note;
    QString page; ///< Name of the page.
    QList<Item> items;
};

struct Disc
{
    QString firstPage; ///< Its name.
    QString folder;    ///< In which pages and small pictures lie.
    QDate day;
    bool hasObjects = false; ///< DICOM.
    QString clinic;          ///< Where the disc comes from; empty: nothing is said of it.
    QList<VisitPage> visits;
    QList<Item> others;
};

QByteArray FirstPage(const Disc& disc);
/// Lies in the folder of the pages.
QByteArray PageOf(const VisitPage& visit);
QByteArray Readme(const Disc& disc);

} // namespace disc_pages
