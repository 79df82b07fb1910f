// The measurements, a file for each subject.
#pragma once

#include "bench/report.h"

#include <cstdint>
#include <filesystem>

namespace ca::bench {

struct Sizes {
    int bulkFiles = 200; // of 10 MiB
    int smallFiles = 20000;
    std::uintmax_t sparseFile = std::uintmax_t{4} << 30;
    std::uintmax_t download = std::uintmax_t{1} << 30;
    int downloads = 2000;
    int entries = 200000;
};

struct Setting {
    Sizes sizes;
    int rounds = 5;       // of works that take seconds
    int shortRounds = 15; // of shorter ones, which suffer more from what else the machine does
    std::filesystem::path data;    // made once and kept
    std::filesystem::path scratch; // empty at the start, and removed at the end
    std::filesystem::path worker;  // the program that does what the launcher does
};

// The whole of a check, from the manifest's download to the last digest, against
// programs that only hash.
void addCheckRows(const Setting& setting, std::vector<Row>& rows);
// downloadToFile from a server on this machine.
void addDownloadRows(const Setting& setting, std::vector<Row>& rows);
// parseManifest.
void addManifestRows(const Setting& setting, std::vector<Row>& rows);
// A frame of the launcher's screen, drawn into memory.
void addFrameRows(const Setting& setting, std::vector<Row>& rows);

} // namespace ca::bench
