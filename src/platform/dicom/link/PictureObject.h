#pragma once

#include <QByteArray>
#include <QCborArray>

class DcmDataset;
class DcmItem;

/// Objects of dcmtk's from the elements and coded data of a request.
namespace pictureobject {

/// Puts the elements into a data set or an item. False when one can't be understood.
bool PutElements(DcmItem& target, const QCborArray& elements);
/// Puts the elements and the JPEG, unchanged, as the one frame of its encapsulated pixel data into an empty data set.
/// False when an element can't be understood.
bool Fill(DcmDataset& dataset, const QCborArray& elements, const QByteArray& frame);

/// Content of an object file with its meta information; empty when none comes of it.
QByteArray FileContent(const QCborArray& elements, const QByteArray& frame);

} // namespace pictureobject
