#pragma once

#include <QtTest>
#include <QtWidgets>

/// The columns of a data table in one line: Columns<QString, int>("text", "count").
template <class... Types, class... Names>
void Columns(Names... names)
{
    (QTest::addColumn<Types>(names), ...);
}

/// Several values of the test's row in one line.
#define QFETCH2(A, a, B, b)                                                                                            \
    QFETCH(A, a);                                                                                                      \
    QFETCH(B, b)
#define QFETCH3(A, a, B, b, ...)                                                                                       \
    QFETCH(A, a);                                                                                                      \
    QFETCH2(B, b, __VA_ARGS__)
#define QFETCH4(A, a, B, b, ...)                                                                                       \
    QFETCH(A, a);                                                                                                      \
    QFETCH3(B, b, __VA_ARGS__)
#define QFETCH5(A, a, B, b, ...)                                                                                       \
    QFETCH(A, a);                                                                                                      \
    QFETCH4(B, b, __VA_ARGS__)
#define QFETCH6(A, a, B, b, ...)                                                                                       \
    QFETCH(A, a);                                                                                                      \
    QFETCH5(B, b, __VA_ARGS__)
