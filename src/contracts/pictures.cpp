#include "contracts/pictures.h"

using namespace Qt::StringLiterals;

namespace {
/// The text of a picture that tells the name; texts go along with copies.
const QString CutKey = u"capture-station-cut"_s;
} // namespace

QString CutFileName(const QImage& picture)
{
    return picture.text(CutKey);
}

void MarkCut(QImage& picture, const QString& fileName)
{
    picture.setText(CutKey, fileName);
}
