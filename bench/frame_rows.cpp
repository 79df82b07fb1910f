#include "bench/data.h"
#include "bench/measure.h"
#include "bench/rows.h"
#include "job/shared.h"
#include "launcher/layout.h"
#include "launcher/screen.h"

#include <stdexcept>

namespace ca::launcher {

const std::string_view launcherVersion = "1.2.1"; // of the length that it has in the launcher

} // namespace ca::launcher

namespace ca::bench {

namespace {

constexpr int framesPerRun = 200;

// The launcher's screen, drawn by the processor into memory.
class Screen {
public:
    Screen() {
        if (!renderer_) {
            throw std::runtime_error(SDL_GetError());
        }
    }
    ~Screen() {
        SDL_DestroyRenderer(renderer_);
        SDL_DestroySurface(surface_);
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Seconds of one frame: the copy of the record and all that is drawn from it.
    double frameSeconds(const std::filesystem::path& installDir, job::Shared& shared) const {
        const auto frames = [&] {
            for (int i = 0; i < framesPerRun; ++i) {
                launcher::drawScreen(renderer_, installDir, job::snapshotShared(shared), "");
            }
        };
        return secondsOf(frames) / framesPerRun;
    }

private:
    SDL_Surface* surface_ =
        SDL_CreateSurface(launcher::windowWidth, launcher::windowHeight, SDL_PIXELFORMAT_XRGB8888);
    SDL_Renderer* renderer_ = SDL_CreateSoftwareRenderer(surface_);
};

} // namespace

void addFrameRows(const Setting& setting, std::vector<Row>& rows) {
    const Screen screen;
    constexpr std::size_t longSize = 10 << 20;
    constexpr std::size_t shortSize = 1 << 10;
    job::Shared longNotes;
    longNotes.state.patchNotes = std::make_shared<std::string>(makeNotes(longSize));
    job::Shared shortNotes;
    shortNotes.state.patchNotes = std::make_shared<std::string>(makeNotes(shortSize));
    const std::vector<double> seconds =
        alternate({[&] { return screen.frameSeconds(setting.scratch, longNotes); },
                   [&] { return screen.frameSeconds(setting.scratch, shortNotes); }},
                  setting.shortRounds);
    rows.push_back({.work = "a frame, " + sizeText(longSize) + " of notes",
                    .ours = timeCell("", seconds[0]),
                    .beside = timeCell("ours, " + sizeText(shortSize), seconds[1]),
                    .figure = seconds[0] / seconds[1],
                    .bar = Bar::AtMost,
                    .limit = 1.2});
}

} // namespace ca::bench
