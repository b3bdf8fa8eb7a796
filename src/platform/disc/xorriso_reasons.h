#pragma once

#include <QStringList>

/// Of a medium that can't be written to.
inline constexpr char16_t NoDiscText[] = u"CD드라이브에 CD가 없습니다.!! 빈 CD를 넣어 주십시오.";
inline constexpr char16_t NotBlankText[] = u"빈 CD가 아닙니다.!! 빈 CD를 넣어 주십시오.";
inline constexpr char16_t UnsuitableText[] = u"이 CD에는 쓸 수 없습니다.!! 다른 CD를 넣어 주십시오.";

/// What went wrong, for the operator: a Korean sentence for the most telling of the lines in which xorriso reports
/// faults, and that line, shortened, behind it.
QString KoreanReason(const QStringList& faults);
