#pragma once

#include <QByteArray>
#include <QCborMap>

class DcmDataset;
class DcmItem;

/// Objects of dcmtk's from the elements and the content of a request.
namespace pictureobject {

/// Puts the elements into a data set or an item. False when one can't be understood.
bool PutElements(DcmItem& target, const QCborArray& elements);
/// Puts both into an empty data set: a JPEG unchanged, as the one frame of encapsulated pixel data. False when an
/// element can't be understood, or the content isn't there.
bool Fill(DcmDataset& dataset, const QCborMap& request);

/// Content of an object file with its meta information; empty when none comes of it.
QByteArray FileContent(const QCborMap& request);

} // namespace pictureobject
