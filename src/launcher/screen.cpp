#include "launcher/screen.h"

#include "install/version_marker.h"
#include "launcher/frame_canvas.h"
#include "launcher/layout.h"
#include "launcher/notes.h"

#include <algorithm>

namespace ca::launcher {

namespace {

void fill(SDL_Renderer* renderer, const SDL_FRect& area, Uint8 red, Uint8 green, Uint8 blue) {
    SDL_SetRenderDrawColor(renderer, red, green, blue, SDL_ALPHA_OPAQUE);
    SDL_RenderFillRect(renderer, &area);
}

void drawBackground(SDL_Renderer* renderer) {
    SDL_SetRenderDrawColor(renderer, 4, 7, 9, SDL_ALPHA_OPAQUE);
    SDL_RenderClear(renderer);
    fill(renderer, {0, 0, windowWidth, windowHeight}, 5, 8, 11);
    fill(renderer, {0, 0, 688, windowHeight}, 8, 13, 17);
    fill(renderer, {688, 0, 352, windowHeight}, 7, 11, 14);
    fill(renderer, {28, 28, 632, 584}, 12, 19, 24);
    fill(renderer, {44, 44, 600, 552}, 17, 26, 31);
}

// The left half. Positions and colours are the design's own numbers, here and below.
void drawNotes(SDL_Renderer* renderer, const std::string& version, const std::string& notes) {
    drawText(renderer, 58, 64, "COLD ANCHOR", 2.45f, 225, 61, 48);
    drawText(renderer, 60, 104, "EXTRACT OR DIE // ONLINE WORLD", 0.92f, 166, 187, 181);
    drawText(renderer, 60, 145, "PATCH NOTES // v" + version, 1.25f, 232, 236, 226);
    fill(renderer, {58, 174, 570, 1}, 72, 110, 101);
    float y = 193;
    for (const std::string& row : wrapText(notes, 74, 18)) {
        if (isNotesHeading(row)) {
            drawText(renderer, 60, y, row, 0.78f, 221, 196, 118);
        } else {
            drawText(renderer, 60, y, row, 0.78f, 166, 187, 181);
        }
        y += 20;
    }
    drawText(renderer, 60, 566, "PATCH NOTES ARE BUNDLED WITH EVERY RELEASE", 0.72f, 105, 139, 132);
}

void drawStatusText(SDL_Renderer* renderer, const job::SharedSnapshot& snapshot) {
    const std::string& text = snapshot.statusText;
    switch (snapshot.jobState) {
    case job::JobState::Failed:
        return drawText(renderer, 720, 118, text, 1.02f, 255, 104, 92);
    case job::JobState::ServiceUnavailable:
        return drawText(renderer, 720, 118, text, 1.02f, 242, 190, 110);
    default:
        return drawText(renderer, 720, 118, text, 1.02f, 183, 224, 205);
    }
}

void drawStatus(SDL_Renderer* renderer, const job::SharedSnapshot& snapshot,
                const std::string& version) {
    drawText(renderer, 720, 72, "GAME STATUS", 1.45f, 226, 236, 232);
    drawStatusText(renderer, snapshot);
    float y = 154;
    for (const std::string& row : wrapText(snapshot.detailText, 38, 4)) {
        drawText(renderer, 720, y, row, 0.72f, 143, 163, 158);
        y += 17;
    }
    const std::string_view latest =
        snapshot.latestVersion.empty() ? "CHECKING" : std::string_view(snapshot.latestVersion);
    drawText(renderer, 720, 245, "INSTALLED", 0.76f, 113, 144, 137);
    drawText(renderer, 820, 245, version, 0.82f, 218, 229, 224);
    drawText(renderer, 720, 270, "LATEST", 0.76f, 113, 144, 137);
    drawText(renderer, 820, 270, latest, 0.82f, 218, 229, 224);
}

void drawProgress(SDL_Renderer* renderer, const job::SharedSnapshot& snapshot) {
    if (snapshot.progressTotal == 0) {
        if (snapshot.updateAvailable) {
            drawText(renderer, 720, 342, "UPDATE AVAILABLE", 0.72f, 225, 175, 83);
        } else {
            drawText(renderer, 720, 342, "SIGNED UPDATE CHANNEL // STABLE", 0.72f, 121, 155, 148);
        }
        return;
    }
    // A file that is larger than its manifest says drives the sum past the total.
    const float ratio = std::min(static_cast<float>(snapshot.progressDone) /
                                     static_cast<float>(snapshot.progressTotal),
                                 1.0f);
    const std::string label = "UPDATE " + std::to_string(static_cast<int>(ratio * 100.0f)) + "%";
    fill(renderer, {720, 322, 260, 10}, 31, 43, 50);
    fill(renderer, {720, 322, 260 * ratio, 10}, 192, 53, 43);
    drawText(renderer, 720, 342, label, 0.82f, 178, 195, 189);
}

// A required update is told before anything else: while it stands, no click starts the game.
void drawButtons(SDL_Renderer* renderer, const job::SharedSnapshot& snapshot) {
    fill(renderer, repairButton, 31, 45, 54);
    drawText(renderer, 736, 466, "REPAIR", 0.95f, 225, 235, 232);
    fill(renderer, refreshButton, 31, 45, 54);
    drawText(renderer, 870, 466, snapshot.busy ? "WAIT" : "REFRESH", 0.95f, 225, 235, 232);
    if (snapshot.updateRequired) {
        fill(renderer, mainButton, 111, 35, 31);
        drawText(renderer, 750, 535, "UPDATE REQUIRED", 1.25f, 255, 230, 216);
    } else if (snapshot.busy) {
        fill(renderer, mainButton, 38, 48, 54);
        drawText(renderer, 790, 535, "PLEASE WAIT", 1.25f, 212, 222, 220);
    } else {
        fill(renderer, mainButton, 157, 38, 31);
        drawText(renderer, 818, 533, "PLAY", 1.65f, 255, 244, 226);
    }
}

} // namespace

void drawText(SDL_Renderer* renderer, float x, float y, std::string_view text, float scale,
              Uint8 red, Uint8 green, Uint8 blue) {
    constexpr std::size_t longestCharacter = 4; // bytes of UTF-8
    const auto columns =
        static_cast<std::size_t>((windowWidth - x) / (SDL_DEBUG_TEXT_FONT_CHARACTER_SIZE * scale)) +
        1;
    const std::string visible(text.substr(0, columns * longestCharacter));
    SDL_SetRenderDrawColor(renderer, red, green, blue, SDL_ALPHA_OPAQUE);
    SDL_SetRenderScale(renderer, scale, scale);
    SDL_RenderDebugText(renderer, x / scale, y / scale, visible.c_str());
    SDL_SetRenderScale(renderer, 1, 1);
}

void drawScreen(SDL_Renderer* renderer, const std::filesystem::path& installDir,
                const job::SharedSnapshot& snapshot, const std::string& localPatchNotes) {
    const std::string version = install::readInstalledVersion(installDir);
    FrameCanvas canvas(renderer);
    drawBackground(renderer);
    drawNotes(renderer, version, chooseNotesText(snapshot, localPatchNotes));
    drawStatus(renderer, snapshot, version);
    drawProgress(renderer, snapshot);
    drawButtons(renderer, snapshot);
    drawText(renderer, 720, 594, "ENTER = PLAY // LAUNCHER v" + std::string(launcherVersion), 0.72f,
             137, 163, 159);
    canvas.present();
}

} // namespace ca::launcher
