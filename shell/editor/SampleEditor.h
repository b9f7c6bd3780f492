// The editor area: the waveform of the selected Key-Sample beside the view of its loop splice
// and the loop's quality figures, with buttons for the zoom. It opens the Key-Sample whenever
// the selection moves to another, and again when a level or loop job rewrote its audio.
#pragma once

#include "core/ModelListener.h"
#include "shell/editor/LoadedSample.h"

#include <QWidget>

namespace tg {
class Model;
}

namespace tg::shell {

class LoopFiguresView;
class LoopSpliceView;
class WaveformView;

class SampleEditor : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    explicit SampleEditor(Model& model, QWidget* parent = nullptr);
    ~SampleEditor() override;

    WaveformView* waveform() const { return waveform_; }
    LoopSpliceView* splice() const { return splice_; }
    LoopFiguresView* loopFigures() const { return figures_; }
    TGsample& sample() { return sample_; }

    void projectListChanged() override;
    void currentProjectChanged(int index) override;
    void multiSampleListChanged() override;
    void currentMultiSampleChanged(int index) override;
    void currentKeyChanged(int note) override;
    void keySamplesChanged(int msl) override;
    void keysChanged(int project, int msl) override;

  public slots:
    // A key picked elsewhere (the keyboard) becomes the selected key.
    void onKeySelected(uint note);

  private:
    // Opens the current key unless it is open already (`always`: open it again anyway).
    void follow(bool always);
    // Loads the current key's audio into the views (`fit`: and shows the whole take).
    void load(bool fit);

    Model& model_;
    TGsample sample_;
    WaveformView* waveform_ = nullptr;
    LoopSpliceView* splice_ = nullptr;
    LoopFiguresView* figures_ = nullptr;
};

} // namespace tg::shell
