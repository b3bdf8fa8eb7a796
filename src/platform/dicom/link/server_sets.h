#pragma once

#include <QByteArray>
#include <QCborArray>
#include <QCborMap>

class DcmItem;
class DcmTagKey;

/// What a server's data sets hold, as link_messages.h has it: texts and numbers bounded, whatever they are.
namespace serversets {

/// Text of an element; empty where it has none, or there is no data set.
QByteArray TextOf(DcmItem* set, const DcmTagKey& tag);

/// Of a study that was found, or of a picture.
QCborArray MatchOf(DcmItem& found, bool isStudy);
/// What it says of its status, behind the number of its error where it tells one; there may be no such set.
QByteArray CommentOf(DcmItem* detail);
/// Puts transaction and objects of a report of storage commitment into the map.
void PutReport(DcmItem& set, QCborMap& report);
/// The elements, as many and as long as link_messages.h says.
QCborArray ElementsOf(DcmItem& item);

} // namespace serversets
