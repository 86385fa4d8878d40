// Lays a series of samples, taken while the instrument was carried along a straight line, over the patches that the
// line crosses: where each sample was taken, how well the edges agree, and the reading of each patch.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "chart/colour/Spectrum.h"

namespace J4Tool {

class LineFit {
public:
    using Spectrum = J4Chart::Spectrum;

    /// A patch on the line, from where the line enters it to where it leaves, mm from the line's start.
    struct Stretch {
        double begin = 0.0;
        double end = 0.0;
    };

    static constexpr double Aperture = 4.5;  ///< diameter of what the instrument sees, mm
    static constexpr double Guard = 0.2;     ///< kept from the edges of a patch besides, mm

    /// Bands are averaged to so many channels: enough to tell colours apart, few enough to be quick.
    static constexpr size_t Channels = 6;
    using Light = std::array<double, Channels>;
    static Light LightOf(const Spectrum& spectrum);

    /// Share of a disc of diameter 1 that lies before a line at this distance from its middle: 0 up to -0.5, 1 from
    /// 0.5 on.
    static double ShareBefore(double distance);

    struct Settings {
        double aperture = Aperture;    ///< mm
        double blur = 0.0;             ///< way of the instrument during one sample, mm
        double largestOffset = 5.0;    ///< how far the samples may lie from their nominal places, mm
        double largestStretch = 0.01;  ///< how much longer or shorter than nominal the line may be, as a share
    };

    struct Reading {
        Spectrum mean{};      ///< of the samples whose whole aperture was inside and that agree
        size_t inside = 0;    ///< how many had their whole aperture inside
        size_t samples = 0;   ///< how many of them the mean is of
        double spread = 0.0;  ///< their root mean square distance from the mean, CIE 1976

        /// How far the samples over the patch and its edges are from what one colour there would look like, in units of
        /// what noise, an uneven print and edges that are a little off explain. A speck in the middle of a short patch
        /// lies under all samples inside alike, and only those over the edges lack it.
        double deviation = 0.0;

        std::vector<size_t> used{};  ///< the samples that the mean is of
    };

    /// @param samples   in the order of the travel
    /// @param places    nominal place of the middle of each sample on the line, mm, rising; one for each sample
    /// @param patches   in the order of the travel, not overlapping; what is between them is paper
    LineFit(const std::vector<Spectrum>& samples, const std::vector<double>& places,
            const std::vector<Stretch>& patches, const Settings& settings);

    /// False where no edge can be told: one colour all along, or too few samples. Offset and scale are 0 and 1 then.
    bool Located() const { return located; }

    /// The sample at a nominal place p was taken at Place(p).
    double Place(double nominal) const { return pivot + offset + scale * (nominal - pivot); }

    /// The middle of the line's edges, which a stretch leaves where it is, mm.
    double Pivot() const { return pivot; }

    /// How far before their nominal places the samples were taken there, mm.
    double Offset() const { return offset; }
    double Scale() const { return scale; }

    /// Standard deviation of the offset, from what the fit leaves and where how steep edges are, mm.
    double OffsetError() const { return offsetError; }

    /// How far the edges that can be seen lie from where the layout has them, root mean square and largest, mm.
    double Residual() const { return residual; }
    double WorstEdge() const { return worstEdge; }
    size_t VisibleEdges() const { return visibleEdges; }

    /// What the fit does not explain, as a share of what the samples differ at all.
    double Unexplained() const { return unexplained; }

    /// Whether so much is left, and so large a share, that other patches were seen than those of the layout.
    bool IsOfOthers() const;

    /// How much worse the next best place along the line fits, as a ratio of the remaining squares: near 1 it can't
    /// be told which is right. Infinite where there is no other.
    double Distinctness() const { return distinctness; }

    /// The median of the patches' deviations: large where the instrument does not see quite as the model does.
    double UsualDeviation() const;

    /// One for each patch.
    const std::vector<Reading>& Readings() const { return readings; }

private:
    class Model;

    void Locate(const Model& model, const Settings& settings);
    void MeasureEdges(const Model& model);
    /// @return noise of one sample, as the standard deviation of a band in reflectance
    double Read(const std::vector<Spectrum>& samples, const std::vector<double>& places,
                const std::vector<Stretch>& patches, const Settings& settings);
    void Compare(const Model& model, double noise);

    bool located = false;
    double pivot = 0.0;
    double offset = 0.0;
    double offsetError = 0.0;
    double scale = 1.0;
    double residual = 0.0;
    double worstEdge = 0.0;
    size_t visibleEdges = 0;
    /// What the fit does not explain, as reflectance: root mean square over the four fifths of the samples that fit best,
    /// so that a speck or a scratch counts for little. About the instrument's noise where the layout is right.
    double remainder = 0.0;
    double unexplained = 0.0;
    double distinctness = 0.0;
    std::vector<Reading> readings;
};

}  // namespace J4Tool
