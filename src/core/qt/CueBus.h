#pragma once
#include <QObject>
#include <QString>

namespace bv {

// Where features ask for a sound cue or for the one-line cues to be looked at again. The
// guidance object listens; with nobody listening both are silent, which is what a model
// without sounds wants.
class CueBus : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    void play(const char* cue, double volume) { emit cueRequested(QString::fromLatin1(cue), volume); }
    void reevaluate() { emit reevaluationRequested(); }

signals:
    void cueRequested(const QString& cue, double volume);
    void reevaluationRequested();
};

} // namespace bv
