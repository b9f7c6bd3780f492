// Drawing one frame of the waveform editor for a ten-minute stereo 24-bit take, onto an
// offscreen image the size of a large editor area: the whole take in view, and 1:1 (one frame
// per pixel) in the middle of it. Also the one-off cost of building the overview.
#include "analysis/PcmSamples.h"
#include "core/Records.h"
#include "shell/editor/MarkerScene.h"
#include "shell/editor/WaveOverview.h"
#include "shell/editor/WavePainter.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>

namespace {

using namespace tg;
using namespace tg::shell;

constexpr int kWidth = 1600;
constexpr int kHeight = 500;
constexpr int64_t kFrames = 44100LL * 600;

std::vector<uint8_t> makeTake(const WaveFormat& format)
{
    std::vector<uint8_t> data(static_cast<size_t>(kFrames) * format.nBlockAlign);
    uint32_t noise = 1;
    for (int64_t f = 0; f < kFrames; ++f) {
        const double t = static_cast<double>(f) / format.nSamplesPerSec;
        const double envelope = 0.2 + 0.7 * std::fabs(std::sin(t * 0.05));
        for (int ch = 0; ch < 2; ++ch) {
            noise = noise * 1664525u + 1013904223u;
            const double v = envelope * std::sin(2.0 * M_PI * 110.0 * t + ch) +
                             ((noise >> 8) / 16777216.0 - 0.5) * 0.01;
            pcm::writeSample(data.data() + f * format.nBlockAlign + ch * 3, 3,
                             static_cast<int32_t>(v * 8388607.0 * 0.9));
        }
    }
    return data;
}

const WaveOverview& take()
{
    static WaveOverview overview = [] {
        WaveOverview o;
        const WaveFormat format = makeWaveFormat(44100, 2, 24);
        o.assign(format, makeTake(format));
        return o;
    }();
    return overview;
}

WaveScene sceneFor(int64_t frames)
{
    TGmsl_key key = makeNewKey(60);
    key.Silence_Out = 22050;
    key.Note_In = 30000;
    key.Note_Out = static_cast<int32_t>(frames - 50000);
    key.Loop_In = static_cast<int32_t>(frames / 2);
    key.Loop_Out = static_cast<int32_t>(frames / 2 + 600);
    key.LoopSearch_In = static_cast<int32_t>(frames / 3);
    key.LoopSearch_Out = key.Note_Out;
    key.Release_In = key.Note_Out - 100000;
    key.Release_Out = key.Note_Out;
    key.loopMode = 1;
    key.xfadeLen = 300;
    return markerScene(key, MarkerId::LoopIn);
}

void drawFrame(benchmark::State& state, const WaveViewport& viewport)
{
    const WaveOverview& wave = take();
    const WaveScene scene = sceneFor(wave.frames());
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&image);
        paintWave(painter, image.rect(), wave, viewport, scene);
        painter.end();
        benchmark::DoNotOptimize(image.constBits());
    }
}

void BM_DrawFullTake(benchmark::State& state)
{
    drawFrame(state, WaveViewport{0.0, static_cast<double>(kFrames) / kWidth});
}
BENCHMARK(BM_DrawFullTake)->Unit(benchmark::kMillisecond);

void BM_DrawOneToOne(benchmark::State& state)
{
    drawFrame(state, WaveViewport{static_cast<double>(kFrames / 2 - kWidth / 2), 1.0});
}
BENCHMARK(BM_DrawOneToOne)->Unit(benchmark::kMillisecond);

void BM_DrawZoomedMiddle(benchmark::State& state)
{
    // A few seconds in view: the levels in between.
    drawFrame(state, WaveViewport{static_cast<double>(kFrames / 2), 150.0});
}
BENCHMARK(BM_DrawZoomedMiddle)->Unit(benchmark::kMillisecond);

void BM_BuildOverview(benchmark::State& state)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 24);
    const std::vector<uint8_t> data = makeTake(format);
    for (auto _ : state) {
        WaveOverview overview;
        overview.assign(format, data);
        benchmark::DoNotOptimize(overview.levels());
    }
}
BENCHMARK(BM_BuildOverview)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv)
{
    // Text needs a font database, which needs a GUI application; no display is needed.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
