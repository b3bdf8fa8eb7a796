#include "records/capture_scheme.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "records/text/text_routines.h"

using namespace Qt::StringLiterals;

QString CheckedPathPart(const QString& part)
{
    // An empty part leads back to the folder above it, which is inside the root all the same.
    const bool empty = Trim(part).isEmpty() && part.size() <= LongestPathPartBytes;
    if (!empty && !IsPathPart(part))
        throw PlatformError(u"폴더나 파일 이름으로 쓸 수 없는 값입니다.!! (%1)"_s.arg(part.left(60)));
    return part;
}

QString YearFolder(const QString& captureRoot, const QString& ymd)
{
    return captureRoot + CheckedPathPart(ymd.left(4)) + u'\\';
}

QString SectionFolder(const QString& yearFolder, const QString& section)
{
    return yearFolder + CheckedPathPart(section) + u'\\';
}

QString LogFolder(const QString& yearFolder, const QString& section)
{
    return yearFolder + CheckedPathPart(section) + u"Log\\"_s;
}

QString MovieFolder(const QString& yearFolder)
{
    return yearFolder + u"movie\\"_s;
}

QString PictureStem(const QString& chart, const QString& ymd, int number)
{
    return CheckedPathPart(chart + ymd + NumberText(number));
}

QString PicturePath(const QString& yearFolder, const QString& section, const QString& chart, const QString& ymd,
                    int number, const QString& extension)
{
    return ClaimPath(yearFolder, section, chart, ymd, number) + u'.' + CheckedPathPart(extension);
}

QString ClaimPath(const QString& yearFolder, const QString& section, const QString& chart, const QString& ymd,
                  int number)
{
    return SectionFolder(yearFolder, section) + PictureStem(chart, ymd, number);
}

QString MovieStem(const QString& yearFolder, const QString& chart, const QString& ymd)
{
    return MovieFolder(yearFolder) + CheckedPathPart(chart + ymd);
}

QString MoviePath(const QString& stem, int segment)
{
    return stem + NumberText(segment) + u".avi"_s;
}

int PictureNumber(const QString& name, const QString& chart, const QString& ymd, const QString& extension)
{
    const QString stem = chart + ymd;
    const QString ending = u'.' + extension;
    if (!name.startsWith(stem) || !name.endsWith(ending))
        return 0;
    const QString digits = name.mid(stem.size(), name.size() - stem.size() - ending.size());
    if (digits.size() < 3)
        return 0;
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    return isNumber && number > 0 ? number : 0;
}
