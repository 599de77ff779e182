#pragma once

#include <QStringList>
#include <QWidget>
#include <memory>

namespace Ui {
class UnpackPage;
}

// The unpacking page: the chosen mkext and its listing, the architecture to unpack and
// the folder to unpack it to.
class UnpackPage : public QWidget {
    Q_OBJECT
public:
    explicit UnpackPage(QWidget *parent = nullptr);
    ~UnpackPage() override;

    QString mkext() const;
    QString architecture() const;
    QString folder() const;

    void setArchitectures(const QStringList &architectures);
    void setFolder(const QString &folder);
    // The archive chosen and its listing.
    void showMkext(const QString &mkext, const QString &listing);
    void setSpinning(bool spinning);

signals:
    void chooseMkextClicked();
    void chooseFolderClicked();
    void unpackClicked();

private:
    std::unique_ptr<Ui::UnpackPage> m_ui;
};
