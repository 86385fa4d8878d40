// Scans rows of patches and prints their spectra: a program in C++17, on top of j4tavla.hpp.
//
// usage: scan_rows [-o KEY=VALUE]... X1,Y1,X2,Y2,PATCHES...
//   A row is given by its first and last point on bare paper, in millimetres, and by its number of patches.
//   -o  sets an option before anything else, for instance on a virtual table Simulator.ChartFile=chart.cgats
//
// For each patch one line goes to standard output: row and patch, counted from 1, and 36 reflectance factors, separated
// by tabs. The exit code is 0 when every patch of every row was found.
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "j4tavla.hpp"

namespace {

struct Row {
    J4Tavla::Position start, end;
    unsigned patches = 0;
};

bool ReadRow(const char* text, Row& row)
{
    char behind = '\0';
    return std::sscanf(text, "%f,%f,%f,%f,%u%c", &row.start.x, &row.start.y, &row.end.x, &row.end.y, &row.patches,
                       &behind) == 5;
}

bool ScanRows(J4Tavla::Table& table, const std::vector<Row>& rows)
{
    table.CheckTable();
    std::fprintf(stderr, "Table %d with instrument %s\n", static_cast<int>(table.Get(J4Tavla::Options::SerialNumber)),
                 table.Get(J4Tavla::Options::TableInstrument).c_str());
    table.Set(J4Tavla::Options::MeasurementMode, "ScanningReflectance");
    table.GoHome();
    table.Calibrate();
    bool good = true;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const std::vector<J4Tavla::Spectrum> spectra = table.Scan(rows[row].start, rows[row].end);
        if (spectra.size() != rows[row].patches) {
            std::fprintf(stderr, "Row %zu has %u patches, but %zu were found.\n", row + 1, rows[row].patches,
                         spectra.size());
            good = false;
        }
        for (std::size_t patch = 0; patch < spectra.size(); ++patch) {
            std::printf("%zu\t%zu", row + 1, patch + 1);
            for (const float value : spectra[patch]) {
                std::printf("\t%.6f", static_cast<double>(value));
            }
            std::printf("\n");
        }
    }
    table.GoHome();
    return good;
}

}  // namespace

int main(int argc, char** argv)
{
    int first = 1;
    while (first + 1 < argc && std::strcmp(argv[first], "-o") == 0) {
        first += 2;
    }
    std::vector<Row> rows(static_cast<std::size_t>(argc - first));
    bool isRow = !rows.empty();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        isRow = isRow && ReadRow(argv[first + static_cast<int>(i)], rows[i]);
    }
    if (!isRow) {
        std::fprintf(stderr, "usage: %s [-o KEY=VALUE]... X1,Y1,X2,Y2,PATCHES...\n", argv[0]);
        return 2;
    }
    try {
        J4Tavla::Table table;
        for (int i = 2; i < first; i += 2) {
            const std::string option = argv[i];
            const std::size_t equals = option.find('=');
            table.SetOption(option.substr(0, equals), equals < option.size() ? option.substr(equals + 1) : "");
        }
        return ScanRows(table, rows) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
