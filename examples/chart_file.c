#include "chart_file.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { LineLength = 8192, MaximumColumns = 256, FirstWavelength = 380, WavelengthStep = 10 };

/* Which column holds what; -1: none. */
typedef struct Columns {
    int name, x, y, width, height;
    int bands[J4_SPECTRUM_LENGTH];
} Columns;

/* Takes the next word of a line; a word in double quotes may hold blanks. NULL at the end. */
static char* NextWord(char** at)
{
    char* word = *at + strspn(*at, " \t\r\n");
    if (*word == '\0' || *word == '#') {
        return NULL;
    }
    char* end;
    if (*word == '"') {
        ++word;
        end = word + strcspn(word, "\"");
    } else {
        end = word + strcspn(word, " \t\r\n");
    }
    *at = *end == '\0' ? end : end + 1;
    *end = '\0';
    return word;
}

static void AssignColumn(Columns* columns, const char* field, int column)
{
    static const char spectral[] = "SPECTRAL_NM";
    if (strcmp(field, "SAMPLE_NAME") == 0) {
        columns->name = column;
    } else if (strcmp(field, "X") == 0) {
        columns->x = column;
    } else if (strcmp(field, "Y") == 0) {
        columns->y = column;
    } else if (strcmp(field, "WIDTH") == 0) {
        columns->width = column;
    } else if (strcmp(field, "HEIGHT") == 0) {
        columns->height = column;
    } else if (strncmp(field, spectral, sizeof spectral - 1) == 0) {
        const int fromFirst = atoi(field + sizeof spectral - 1) - FirstWavelength;
        if (fromFirst >= 0 && fromFirst % WavelengthStep == 0 && fromFirst / WavelengthStep < J4_SPECTRUM_LENGTH) {
            columns->bands[fromFirst / WavelengthStep] = column;
        }
    }
}

static int HasAllColumns(const Columns* columns)
{
    for (int band = 0; band < J4_SPECTRUM_LENGTH; ++band) {
        if (columns->bands[band] < 0) {
            return 0;
        }
    }
    return columns->name >= 0 && columns->x >= 0 && columns->y >= 0 && columns->width >= 0 && columns->height >= 0;
}

static int ToNumber(const char* text, double* value)
{
    char* end;
    *value = strtod(text, &end);
    return end != text && *end == '\0';
}

static int ReadPatch(char** words, const Columns* columns, ChartPatch* patch)
{
    snprintf(patch->name, sizeof patch->name, "%s", words[columns->name]);
    if (!ToNumber(words[columns->x], &patch->x) || !ToNumber(words[columns->y], &patch->y) ||
        !ToNumber(words[columns->width], &patch->width) || !ToNumber(words[columns->height], &patch->height)) {
        return 0;
    }
    for (int band = 0; band < J4_SPECTRUM_LENGTH; ++band) {
        double value;
        if (!ToNumber(words[columns->bands[band]], &value)) {
            return 0;
        }
        patch->reference[band] = (float)value;
    }
    return 1;
}

static int ByPlace(const void* left, const void* right)
{
    const ChartPatch* first = left;
    const ChartPatch* second = right;
    if (first->y != second->y) {
        return first->y < second->y ? -1 : 1;
    }
    return first->x < second->x ? -1 : first->x > second->x;
}

/* Reads all lines into a chart whose patches have room; gives the reason of a failure, NULL for none. */
static const char* ReadLines(FILE* file, Chart* chart, int* line)
{
    enum { Head, Format, Data } section = Head;
    static char text[LineLength];
    char* words[MaximumColumns];
    int fields = 0;
    Columns columns;
    memset(&columns, -1, sizeof columns);
    while (fgets(text, sizeof text, file) != NULL) {
        ++*line;
        if (strlen(text) == sizeof text - 1) {
            return "the line is too long";
        }
        char* at = text;
        int count = 0;
        for (char* word; (word = NextWord(&at)) != NULL; words[count++] = word) {
            if (count == MaximumColumns) {
                return "too many values";
            }
        }
        if (count == 0) {
            continue;
        }
        if (strcmp(words[0], "BEGIN_DATA_FORMAT") == 0) {
            section = Format;
        } else if (strcmp(words[0], "BEGIN_DATA") == 0) {
            if (!HasAllColumns(&columns)) {
                return "the data format lacks a field";
            }
            section = Data;
        } else if (strcmp(words[0], "END_DATA") == 0) {
            return chart->count > 0 ? NULL : "there are no patches";
        } else if (strcmp(words[0], "END_DATA_FORMAT") == 0) {
            section = Head;
        } else if (section == Format) {
            for (int i = 0; i < count; ++i) {
                AssignColumn(&columns, words[i], fields++);
            }
        } else if (section == Data) {
            if (count != fields) {
                return "wrong number of values";
            }
            if (chart->count == ChartMaximumPatches) {
                return "too many patches";
            }
            if (!ReadPatch(words, &columns, &chart->patches[chart->count])) {
                return "a value is no number";
            }
            ++chart->count;
        } else if (strcmp(words[0], "LAYOUT_ORIGIN") == 0 && (count != 2 || strcmp(words[1], "CENTRE") != 0)) {
            return "this program reads only charts whose places are those of the patches' middles";
        }
    }
    return "END_DATA is missing";
}

int ReadChart(const char* fileName, Chart* chart)
{
    chart->count = 0;
    chart->patches = calloc(ChartMaximumPatches, sizeof *chart->patches);
    FILE* file = fopen(fileName, "r");
    int line = 0;
    const char* failure = "the file can't be opened";
    if (chart->patches == NULL) {
        failure = "out of memory";
    } else if (file != NULL) {
        failure = ReadLines(file, chart, &line);
    }
    if (file != NULL) {
        fclose(file);
    }
    if (failure != NULL) {
        fprintf(stderr, "%s:%d: %s\n", fileName, line, failure);
        FreeChart(chart);
        return 0;
    }
    qsort(chart->patches, (size_t)chart->count, sizeof *chart->patches, ByPlace);
    return 1;
}

int WriteMeasuredSpectra(const char* fileName, const Chart* chart)
{
    FILE* file = fopen(fileName, "w");
    if (file == NULL) {
        fprintf(stderr, "%s: the file can't be written\n", fileName);
        return 0;
    }
    fprintf(file, "CGATS.17\nDESCRIPTOR \"Measured spectra\"\nNUMBER_OF_FIELDS %d\nBEGIN_DATA_FORMAT\nSAMPLE_NAME",
            1 + J4_SPECTRUM_LENGTH);
    for (int band = 0; band < J4_SPECTRUM_LENGTH; ++band) {
        fprintf(file, "\tSPECTRAL_NM%d", FirstWavelength + WavelengthStep * band);
    }
    fprintf(file, "\nEND_DATA_FORMAT\nNUMBER_OF_SETS %d\nBEGIN_DATA\n", chart->count);
    for (int i = 0; i < chart->count; ++i) {
        const char* quote = strpbrk(chart->patches[i].name, " \t") != NULL ? "\"" : "";
        fprintf(file, "%s%s%s", quote, chart->patches[i].name, quote);
        for (int band = 0; band < J4_SPECTRUM_LENGTH; ++band) {
            fprintf(file, "\t%.5f", (double)chart->patches[i].measured[band]);
        }
        fprintf(file, "\n");
    }
    fprintf(file, "END_DATA\n");
    const int failed = ferror(file);
    if (fclose(file) != 0 || failed) {
        fprintf(stderr, "%s: the file could not be written to its end\n", fileName);
        return 0;
    }
    return 1;
}

int EndOfRow(const Chart* chart, int first)
{
    const ChartPatch* begin = &chart->patches[first];
    int end = first + 1;
    while (end < chart->count && fabs(chart->patches[end].y - begin->y) < begin->height / 2) {
        ++end;
    }
    return end;
}

void FreeChart(Chart* chart)
{
    free(chart->patches);
    chart->patches = NULL;
    chart->count = 0;
}
