// The data of one sample, and the capacities of the run.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace dorvek::input {

inline constexpr std::int32_t maxbin = 10000;  // bins per sample
inline constexpr std::int32_t maxpdf = 10;     // partial PDFs per sample
inline constexpr std::int32_t maxsamp = 2;     // samples per set of data

// One value per bin.
using Column = std::array<float, maxbin>;

// The content of one PDF file. Bins beyond nbins and partials beyond npdfs hold zeros when the set
// has been loaded.
struct PdfSet {
    std::int32_t nbins = 0;           // bins read, 0 .. maxbin
    std::int32_t npdfs = 0;           // partials per bin, as declared; taken as 0 when negative
    std::int32_t used = 0;            // bins that may hold anything but zeros
    Column r{};                       // position of each bin, in the file's unit of length
    std::array<Column, maxpdf> g{};   // value of each partial PDF at each bin
    std::array<Column, maxpdf> cn{};  // its running coordination number, atoms
};

// The partials that a set really holds.
[[nodiscard]] inline std::size_t held_partials(const PdfSet& set) {
    return static_cast<std::size_t>(std::max(set.npdfs, 0));
}

// The first `count` values of a column.
[[nodiscard]] inline std::span<const float> first_bins(const Column& column, std::int32_t count) {
    return std::span(column).first(static_cast<std::size_t>(count));
}

// Bins ilo .. ihi of a column, counted from 1, both ends included.
[[nodiscard]] inline std::span<const float> window_of(const Column& column, std::int32_t ilo,
                                                      std::int32_t ihi) {
    return first_bins(column, ihi).subspan(static_cast<std::size_t>(ilo - 1));
}

}  // namespace dorvek::input
