#include "visit/Visit.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "text/text_routines.h"

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

QString RootOfYear(const QString& yearFolder)
{
    return yearFolder.first(yearFolder.chopped(1).lastIndexOf(u'\\') + 1);
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

QString MoviePath(const QString& stem, int segment)
{
    return stem + NumberText(segment) + u".avi"_s;
}

bool Visit::operator==(const Visit& other) const
{
    return chart == other.chart && ymd == other.ymd && etc == other.etc;
}

QString Visit::SectionFolder() const
{
    return ::SectionFolder(captureDir, etc);
}

QString Visit::LogFolder() const
{
    return ::LogFolder(captureDir, etc);
}

QString Visit::PicturePath(int number) const
{
    return ClaimPath(number) + u'.' + CheckedPathPart(imageExt);
}

QString Visit::DeletedPicturePath(int number) const
{
    return LogFolder() + PicturePath(number).mid(SectionFolder().size());
}

QString Visit::ClaimPath(int number) const
{
    return SectionFolder() + CheckedPathPart(PicturePrefix() + NumberText(number));
}

int Visit::PictureNumber(const QString& name) const
{
    const QString stem = PicturePrefix();
    const QString ending = u'.' + imageExt;
    if (!name.startsWith(stem) || !name.endsWith(ending))
        return 0;
    const QString digits = name.mid(stem.size(), name.size() - stem.size() - ending.size());
    if (digits.size() < 3)
        return 0;
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    return isNumber && number > 0 ? number : 0;
}

QString Visit::MovieStem() const
{
    return MovieFolder(captureDir) + CheckedPathPart(PicturePrefix());
}
