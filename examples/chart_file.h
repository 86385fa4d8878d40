/* Charts as CGATS.17 text files: reads which patch lies where and what it should measure, and writes what was
 * measured. */
#ifndef CHART_FILE_H
#define CHART_FILE_H

#include "j4tavla.h"

enum { ChartNameLength = 64, ChartMaximumPatches = 4096 };

typedef struct ChartPatch {
    char name[ChartNameLength];
    double x, y;          /* middle of the patch, mm */
    double width, height; /* mm */
    float reference[J4_SPECTRUM_LENGTH];
    float measured[J4_SPECTRUM_LENGTH];
} ChartPatch;

typedef struct Chart {
    ChartPatch* patches; /* row by row: by y, and by x within a row */
    int count;
} Chart;

/**
 * Reads a chart with the fields SAMPLE_NAME, X, Y, WIDTH, HEIGHT (mm, X and Y are the middle) and
 * SPECTRAL_NM380 to SPECTRAL_NM730; one data set a line.
 * @return 1 when done; 0 after a failure, which has been written to stderr
 */
int ReadChart(const char* fileName, Chart* chart);

/** Writes name and measured spectrum of every patch. @return as ReadChart */
int WriteMeasuredSpectra(const char* fileName, const Chart* chart);

/** @return the first patch behind the row that begins at patch number first */
int EndOfRow(const Chart* chart, int first);

void FreeChart(Chart* chart);

#endif
