// The table as the commands see it: every call of the library with its failure turned into a ToolError, lengths in
// millimetres, and the table let go at the end. No motion begins once the program was asked to end.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "chart/colour/Densities.h"
#include "chart/colour/Spectrum.h"
#include "tools/Point.h"
#include "tools/SavedBlocks.h"
#include "tools/TableFunctions.h"

namespace J4Tool {

/// One at a time: the library reports its failures without telling to whom.
class Session {
public:
    using Spectrum = J4Chart::Spectrum;

    explicit Session(const TableFunctions& functions);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Fails where the instrument's library is missing: every option then reads as the text of that failure.
    void RequireInstrumentLibrary();

    void SetOption(const std::string& key, const std::string& value);
    std::string GetOption(const std::string& key);

    /// An option that may be missing; empty then.
    std::string TryOption(const std::string& key);

    /// Finds table and instrument.
    void Connect();
    void GoHome();

    /// Goes to the white tile and calibrates there.
    void Calibrate();
    void Move(Point target);
    Point Position();

    /// Carries the instrument from start to end.
    /// @return a spectrum for each patch that was recognised, in the order of the travel
    std::vector<Spectrum> Scan(Point start, Point end);

    /// One measurement where the arm stands.
    Spectrum Measure();

    /// From now on the densities of all samples are read too.
    void WantDensities() { wantsDensities = true; }

    /// Of the samples of the last Scan() or Measure(), in their order, as the instrument tells them; empty where they are
    /// not wanted.
    const std::vector<J4Chart::Densities>& SampleDensities() const { return densities; }

    /// The reflectance of the white tile that the table holds.
    Spectrum WhiteBase();
    void WriteWhiteBase(Spectrum whiteBase);

    /// Has the table's configuration block kept before each call that may write it.
    /// @param keep  takes the table's serial number and the block; when it throws nothing is called
    void KeepBlocks(std::function<void(const std::string&, const Block&)> keep) { keepBlock = std::move(keep); }

    /// Lets the arm and the paper go. Never fails; done by the destructor too.
    void Release();

private:
    void Check(const std::string& what, const std::function<int32_t()>& call);
    /// A motion, or what else takes the table's time: not begun once the program is to end, which shows at its end too.
    /// The first of a session is tried again when what fails it is left over from a motion of before: a table whose cable
    /// was pulled while its arm ran is busy as long as that lasts, and then reports its end to whoever asks next.
    void Work(const std::string& what, const std::function<int32_t()>& call);
    void WaitForStandstill();

    /// A call that may write the table's flash: its block is kept first, and no signal ends the program within it.
    void CheckWriting(const std::string& what, const std::function<int32_t()>& call);
    /// The spectrum, and the densities where they are wanted.
    Spectrum ReadSample(uint32_t index);

    TableFunctions functions;
    std::function<void(const std::string&, const Block&)> keepBlock;
    bool connected = false;
    bool hasMoved = false;
    bool wantsDensities = false;
    std::vector<J4Chart::Densities> densities;
};

}  // namespace J4Tool
