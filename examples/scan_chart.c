/*
 * Scans a chart row by row and compares what was measured with what the chart should be: the program to
 * start from when you write one of your own. Everything that it asks of table and instrument goes through
 * j4tavla.h.
 *
 * usage: scan_chart [-o KEY=VALUE]... CHART MEASURED
 *   CHART     the chart's layout and reference spectra, CGATS.17
 *   MEASURED  is written: the measured spectra, CGATS.17
 *   -o        sets an option before anything else, for instance J4TScanSpeed=100, or on a virtual table
 *             Simulator.ChartFile=chart.cgats
 * The exit code is 0 when every patch was found and no colour difference is above the limit.
 */
#include <stdio.h>
#include <string.h>

#include "chart_file.h"
#include "colour.h"
#include "j4tavla.h"

/* A row begins and ends on bare paper, this far from the outer edges of its patches (mm): farther than the
 * aperture reaches, so that the instrument sees where the first patch begins. */
static const double margin = 8.0;

/* What is left of the colour difference when all is well. A patch is the mean of the samples in the middle
 * of its travel; there the aperture (4.5 mm) and the way during one sample (0.8 mm at 160 mm/s) lie inside a
 * patch of 10 mm or more, no neighbour is mixed in, and only the rounding of the figures remains. */
static const double largestDifference = 0.1;

/* Every failure of the library arrives here before the failed function returns. */
static void OnError(const char* functionName, int32_t status, const char* message)
{
    fprintf(stderr, "%s failed with status %d: %s\n", functionName, (int)status, message);
}

static void OnDeviceMessage(int32_t message, const char* text)
{
    if (message == 1) {
        fprintf(stderr, "Instrument %s has been unplugged.\n", text);
    }
}

/* Sets the option that an argument KEY=VALUE names. */
static int SetOptionFromArgument(const char* argument)
{
    char key[128];
    const char* value = strchr(argument, '=');
    if (value == NULL || (size_t)(value - argument) >= sizeof key) {
        fprintf(stderr, "'%s' is not of the form KEY=VALUE\n", argument);
        return 0;
    }
    memcpy(key, argument, (size_t)(value - argument));
    key[value - argument] = '\0';
    return J4_SetOption(key, value + 1) == 0;
}

/* Finds table and instrument and makes them ready to scan. */
static int Prepare(void)
{
    if (J4_IsTableConnected() != 0) {
        return 0;
    }
    /* The text of J4_GetOption lives until its next call: one printf for each. */
    printf("Table %s", J4_GetOption("J4TSerialNumber"));
    printf(" with instrument %s\n", J4_GetOption("J4TJ4SerialNumber"));
    return J4_SetOption("MeasurementMode", "ScanningReflectance") == 0 && J4_GoToHomePosition() == 0 &&
           J4_Calibrate() == 0;
}

/* Scans patches first to end - 1, which lie in one row. */
static int ScanRow(Chart* chart, int first, int end)
{
    const ChartPatch* left = &chart->patches[first];
    const ChartPatch* right = &chart->patches[end - 1];
    if (J4_Scan((float)(left->x - left->width / 2 - margin), (float)left->y,
                (float)(right->x + right->width / 2 + margin), (float)right->y) != 0) {
        return 0;
    }
    const int32_t found = J4_GetNumberOfAvailableSamples();
    if (found != end - first) {
        fprintf(stderr, "The row of %s has %d patches, but %d were found.\n", left->name, end - first, (int)found);
        return 0;
    }
    for (int i = first; i < end; ++i) {
        if (J4_GetSpectrum(chart->patches[i].measured, (uint32_t)(i - first)) != 0) {
            return 0;
        }
    }
    return 1;
}

static int ScanChart(Chart* chart)
{
    for (int first = 0; first < chart->count;) {
        const int end = EndOfRow(chart, first);
        if (!ScanRow(chart, first, end)) {
            return 0;
        }
        first = end;
    }
    return J4_GoToHomePosition() == 0;
}

/* Prints the comparison. @return 1 when no difference is above the limit */
static int Report(const Chart* chart)
{
    double sum = 0.0;
    double maximum = 0.0;
    int good = 1;
    printf("%-12s %25s  %25s  %s\n", "patch", "reference L*  a*  b*", "measured L*  a*  b*", "difference");
    for (int i = 0; i < chart->count; ++i) {
        const Lab reference = LabOfSpectrum(chart->patches[i].reference);
        const Lab measured = LabOfSpectrum(chart->patches[i].measured);
        const double difference = ColourDifference(reference, measured);
        printf("%-12s  %8.3f%8.3f%8.3f   %8.3f%8.3f%8.3f    %8.4f\n", chart->patches[i].name, reference.l, reference.a,
               reference.b, measured.l, measured.a, measured.b, difference);
        sum += difference;
        maximum = difference > maximum ? difference : maximum;
        good = good && difference <= largestDifference; /* not so for what is no number */
    }
    printf("%d patches, colour difference (CIE 1976): mean %.4f, maximum %.4f, limit %.4f\n", chart->count,
           sum / chart->count, maximum, largestDifference);
    return good;
}

int main(int argc, char** argv)
{
    J4_RegisterErrorHandler(OnError);
    J4_RegisterDeviceMessageHandler(OnDeviceMessage);
    /* Without the instrument's library no handler is called, and why is the text of every option. */
    const char* version = J4_GetOption("J4TVersion");
    if (strncmp(version, "Version ", 8) != 0) {
        fprintf(stderr, "%s\n", version);
        return 1;
    }

    int argument = 1;
    for (; argument + 1 < argc && strcmp(argv[argument], "-o") == 0; argument += 2) {
        if (!SetOptionFromArgument(argv[argument + 1])) {
            return 2;
        }
    }
    if (argc - argument != 2) {
        fprintf(stderr, "usage: %s [-o KEY=VALUE]... CHART MEASURED\n", argv[0]);
        return 2;
    }
    Chart chart;
    if (!ReadChart(argv[argument], &chart)) {
        return 2;
    }
    const int good =
        Prepare() && ScanChart(&chart) && WriteMeasuredSpectra(argv[argument + 1], &chart) && Report(&chart);
    FreeChart(&chart);
    return good ? 0 : 1;
}
