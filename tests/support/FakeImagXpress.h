#pragma once

#include "contracts/components.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"

#include <QFont>

/// An image control that holds a picture and shows nothing.
class FakeImagXpress : public ImagXpress
{
public:
    static void Register()
    {
        RegisterComponent<ImagXpress>(QStringLiteral("IMAGXPR6LibCtl.ImagXpress"),
                                      [] { return std::make_unique<FakeImagXpress>(); });
    }

    QImage Picture() const override { return m_picture; }
    void setPicture(const QImage& picture) override { m_picture = picture; }
    void setSourceFile(const QString& path) override { m_picture = LoadPicture(path); }
    void setTargetFile(const QString&) override {}
    void setTargetFileType(int) override {}
    void WriteTargetFile() override {}
    void ZoomToFit(int) override {}
    void ScaleBy(float) override {}
    void Refresh() override {}
    void setPointerStyle(int) override {}
    void setFrameWidth(float) override {}
    void setFrameHeight(float) override {}
    QPointF ViewFromPicture(QPointF point) const override { return point; }
    QPointF PictureFromView(QPointF point) const override { return point; }
    qreal ViewScale() const override { return 1; }
    void setDrawMode(int) override {}
    void setDrawStyle(int) override {}
    void setDrawWidth(int) override {}
    void DrawLine(float, float, float, float, double) override {}
    void DrawRoundRect(float, float, float, float, int, int, double) override {}
    void DrawArc(float, float, float, float, int, int, double) override {}
    void DrawText(float, float, const QString&, double) override {}
    QFont DrawFont() const override { return {}; }
    void setDrawFont(const QFont&) override {}

private:
    QImage m_picture;
};
