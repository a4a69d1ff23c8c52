// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The pixel loops in vector form. This unit is compiled once for each vector instruction set that Highway
// knows for the processor family; the form to run is chosen at run time.
//
// Bytes are never widened: a 16-bit lane holds two neighbouring bytes, and the lower and the upper byte are
// computed each in the whole lane.
#include "imaging/nv12_blend.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/nv12_blend.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace imaging::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

// A processor without vectors runs the definition itself.
using plain::blendChromaRect;
using plain::blendChromaSpans;
using plain::blendLumaRect;
using plain::blendLumaSpans;
using plain::halveCoverage;
using plain::layCoverage;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using ShortBytes = hn::CappedTag<std::uint8_t, 16>;

/// True where single bytes of a vector can be read and written without touching the others.
constexpr bool kHasByteMasks = HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL;

/// How a loop body reaches memory: whole vectors.
struct WholeAccess {
    template <class D>
    HWY_INLINE hn::Vec<D> load(D d, std::uint8_t const* from) const
    {
        return hn::LoadU(d, from);
    }
    template <class D>
    HWY_INLINE void store(hn::Vec<D> v, D d, std::uint8_t* to) const
    {
        hn::StoreU(v, d, to);
    }
};

enum class Part { First, Rest };

/// Likewise the first `count` bytes of a vector, or the rest of it; the others read as 0 and are not written.
template <Part part>
struct PartAccess {
    std::size_t count;

    template <class D>
    HWY_INLINE auto mask(D d) const
    {
        auto const first = hn::FirstN(d, count);
        if constexpr (part == Part::Rest) {
            return hn::Not(first);
        } else {
            return first;
        }
    }
    template <class D>
    HWY_INLINE hn::Vec<D> load(D d, std::uint8_t const* from) const
    {
        return hn::MaskedLoad(mask(d), d, from);
    }
    template <class D>
    HWY_INLINE void store(hn::Vec<D> v, D d, std::uint8_t* to) const
    {
        hn::BlendedStore(v, mask(d), d, to);
    }
};

/// Calls `vector(access, tag, i)` for each vector of the `bytes` from `first` on, and where the last one cannot be
/// taken in part, `single(i)` for each step of `unit` bytes that is left.
template <std::ptrdiff_t unit, class Vector, class Single>
HWY_INLINE void walk(std::uint8_t const* first, std::size_t bytes, Vector const& vector, Single const& single)
{
    Bytes const d8;
    auto const step = static_cast<std::ptrdiff_t>(hn::Lanes(d8));
    auto const end = static_cast<std::ptrdiff_t>(bytes);
    std::ptrdiff_t i = 0;
    if constexpr (kHasByteMasks) {
        // A vector that straddles two cache lines costs twice: a long run begins with the end of a vector that lies
        // in one line. Of what stands before the run nothing is read or written.
        auto const before = static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(first)) & (step - 1);
        if (before != 0 && before % unit == 0 && end >= 3 * step) {
            vector(PartAccess<Part::Rest>{static_cast<std::size_t>(before)}, d8, -before);
            i = step - before;
        }
    }
    for (; i + step <= end; i += step) {
        vector(WholeAccess(), d8, i);
    }
    if constexpr (kHasByteMasks) {
        if (i < end) {
            vector(PartAccess<Part::First>{static_cast<std::size_t>(end - i)}, d8, i);
        }
    } else {
        ShortBytes const dShort;
        auto const shortStep = static_cast<std::ptrdiff_t>(hn::Lanes(dShort));
        for (; i + shortStep <= end; i += shortStep) {
            vector(WholeAccess(), dShort, i);
        }
        for (; i < end; i += unit) {
            single(i);
        }
    }
}

/// Asks for a row that will be written soon.
HWY_INLINE void fetch(std::uint8_t const* row, std::size_t bytes)
{
    constexpr std::size_t kCacheLine = 64;
    for (std::size_t i = 0; i < bytes; i += kCacheLine) {
        __builtin_prefetch(row + i, 1);
    }
}

/// Blends the two bytes of each 16-bit lane of `under` towards `lowOver` and `highOver`. The weights are those of
/// inkWeight; multiplying by them in fixed point rounds as blendInk does. What is to be added may be negative, but
/// its low byte is all that an addition of bytes needs.
template <class V16, class VSigned = hn::VFromD<hn::RebindToSigned<hn::DFromV<V16>>>>
HWY_INLINE V16 blendLanes(V16 under, VSigned lowOver, VSigned highOver, VSigned lowWeight, VSigned highWeight)
{
    hn::DFromV<V16> const d;
    hn::RebindToSigned<decltype(d)> const dSigned;
    hn::Repartition<std::uint8_t, decltype(d)> const d8;
    auto const lowByte = hn::Set(d, std::uint16_t{0x00FF});
    auto const low = hn::BitCast(dSigned, hn::And(under, lowByte));
    auto const high = hn::BitCast(dSigned, hn::ShiftRight<8>(under));
    auto const lowStep = hn::BitCast(d, hn::MulFixedPoint15(hn::Sub(lowOver, low), lowWeight));
    auto const highStep = hn::BitCast(d, hn::MulFixedPoint15(hn::Sub(highOver, high), highWeight));
    auto const steps = hn::OrAnd(hn::ShiftLeft<8>(highStep), lowStep, lowByte);
    return hn::BitCast(d, hn::Add(hn::BitCast(d8, under), hn::BitCast(d8, steps)));
}

/// Which byte of each 16 goes where so that each even one, or each odd one, stands twice in its lane.
alignas(16) constexpr std::uint8_t kTwiceEven[16] = {0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14};
alignas(16) constexpr std::uint8_t kTwiceOdd[16] = {1, 1, 3, 3, 5, 5, 7, 7, 9, 9, 11, 11, 13, 13, 15, 15};

/// inkWeight of the bytes that `order` puts twice into each lane: 257 times a byte is the byte twice.
template <class D8>
HWY_INLINE auto weightsOf(D8 d8, hn::Vec<D8> coverage, std::uint8_t const* order)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    hn::RebindToSigned<decltype(d16)> const dSigned;
    auto const twice = hn::TableLookupBytes(coverage, hn::LoadDup128(d8, order));
    return hn::BitCast(dSigned, hn::ShiftRight<1>(hn::BitCast(d16, twice)));
}

/// One vector of luma.
template <class Access, class D8>
HWY_INLINE void blendLumaVector(Access access, D8 d8, std::uint8_t* HWY_RESTRICT luma,
                                std::uint8_t const* HWY_RESTRICT coverage, std::uint8_t level)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    auto const covered = access.load(d8, coverage);
    auto const under = hn::BitCast(d16, access.load(d8, luma));
    auto const over = hn::Set(hn::RebindToSigned<decltype(d16)>(), std::int16_t{level});
    auto const mixed =
        blendLanes(under, over, over, weightsOf(d8, covered, kTwiceEven), weightsOf(d8, covered, kTwiceOdd));
    access.store(hn::BitCast(d8, mixed), d8, luma);
}

/// One vector of chroma, in which each coverage byte stands twice as it is.
template <class Access, class D8>
HWY_INLINE void blendChromaVector(Access access, D8 d8, std::uint8_t* HWY_RESTRICT chroma,
                                  std::uint8_t const* HWY_RESTRICT coverage, std::uint8_t cb, std::uint8_t cr)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    hn::RebindToSigned<decltype(d16)> const dSigned;
    auto const twice = hn::BitCast(d16, access.load(d8, coverage));
    auto const weight = hn::BitCast(dSigned, hn::ShiftRight<1>(twice));
    auto const under = hn::BitCast(d16, access.load(d8, chroma));
    auto const mixed =
        blendLanes(under, hn::Set(dSigned, std::int16_t{cb}), hn::Set(dSigned, std::int16_t{cr}), weight, weight);
    access.store(hn::BitCast(d8, mixed), d8, chroma);
}

/// Calls `blend(bytes, coverage, length)` for each span.
template <class Blend>
HWY_INLINE void forEachSpan(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                            Blend const& blend)
{
    for (Span const* span = spans; span != spans + count; ++span) {
        blend(place.plane + (place.origin + span->row * place.stride + span->column), coverage + span->offset,
              static_cast<std::size_t>(span->length));
    }
}

void blendLumaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                    std::uint8_t level)
{
    forEachSpan(place, spans, count, coverage, [&](std::uint8_t* luma, std::uint8_t const* covered, std::size_t bytes) {
        walk<1>(
            luma, bytes,
            [&](auto access, auto d8, std::ptrdiff_t i) { blendLumaVector(access, d8, luma + i, covered + i, level); },
            [&](std::ptrdiff_t i) { luma[i] = blendInk(luma[i], level, covered[i]); });
    });
}

void blendChromaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                      std::uint8_t cb, std::uint8_t cr)
{
    forEachSpan(place, spans, count, coverage,
                [&](std::uint8_t* chroma, std::uint8_t const* covered, std::size_t bytes) {
                    walk<2>(
                        chroma, bytes,
                        [&](auto access, auto d8, std::ptrdiff_t i) {
                            blendChromaVector(access, d8, chroma + i, covered + i, cb, cr);
                        },
                        [&](std::ptrdiff_t i) {
                            chroma[i] = blendInk(chroma[i], cb, covered[i]);
                            chroma[i + 1] = blendInk(chroma[i + 1], cr, covered[i + 1]);
                        });
                });
}

/// The two levels that the bytes of a rectangle tend to in turn, and how far; both are the same in luma.
struct Tint {
    std::uint8_t even;
    std::uint8_t odd;
    int weight;
};

/// The mean of two bytes, halves up.
template <class V8>
HWY_INLINE V8 meanOf(V8 a, V8 b)
{
    if constexpr (HWY_TARGET == HWY_SVE || HWY_TARGET == HWY_SVE_256) {
        // The first SVE has no instruction for it, and Highway 1.0.3 then loses the ninth bit of the sum.
        return hn::Sub(hn::Or(a, b), hn::ShiftRight<1>(hn::Xor(a, b)));
    } else {
        return hn::AverageRound(a, b);
    }
}

/// One vector blended towards the tint. Both bytes of a 16-bit lane are multiplied by what remains of them.
template <class Access, class D8>
HWY_INLINE void blendTintVector(Access access, D8 d8, std::uint8_t* HWY_RESTRICT bytes, Tint const& tint)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    auto const keep = hn::Set(d16, static_cast<std::uint16_t>(kFullWeight - tint.weight));
    auto const lowAdd = hn::Set(d16, static_cast<std::uint16_t>(tint.even * tint.weight + kFullWeight / 2));
    auto const highAdd = hn::Set(d16, static_cast<std::uint16_t>(tint.odd * tint.weight + kFullWeight / 2));
    auto const under = hn::BitCast(d16, access.load(d8, bytes));
    auto const low = hn::Add(hn::Mul(hn::And(under, hn::Set(d16, std::uint16_t{0x00FF})), keep), lowAdd);
    auto const high = hn::Add(hn::Mul(hn::ShiftRight<8>(under), keep), highAdd);
    auto const mixed = hn::OrAnd(hn::ShiftRight<8>(low), high, hn::Set(d16, std::uint16_t{0xFF00}));
    access.store(hn::BitCast(d8, mixed), d8, bytes);
}

/// Likewise with the weight of one half, the commonest for boxes: blendLevel is then the mean, halves up.
template <class Access, class D8>
HWY_INLINE void blendHalfTintVector(Access access, D8 d8, std::uint8_t* HWY_RESTRICT bytes, Tint const& tint)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    auto const over = hn::BitCast(d8, hn::Set(d16, static_cast<std::uint16_t>(tint.even | tint.odd << 8)));
    access.store(meanOf(access.load(d8, bytes), over), d8, bytes);
}

template <std::ptrdiff_t unit, class Vector>
HWY_INLINE void blendTintRows(std::uint8_t* first, std::ptrdiff_t stride, std::size_t bytes, std::size_t rows,
                              Tint const& tint, Vector const& vector)
{
    constexpr std::size_t kRowsAhead = 4;
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const to = first + static_cast<std::ptrdiff_t>(row) * stride;
        if (row + kRowsAhead < rows) {
            fetch(to + static_cast<std::ptrdiff_t>(kRowsAhead) * stride, bytes);
        }
        walk<unit>(
            to, bytes, [&](auto access, auto d8, std::ptrdiff_t i) { vector(access, d8, to + i); },
            [&](std::ptrdiff_t i) {
                to[i] = blendLevel(to[i], tint.even, tint.weight);
                if constexpr (unit == 2) {
                    to[i + 1] = blendLevel(to[i + 1], tint.odd, tint.weight);
                }
            });
    }
}

template <std::ptrdiff_t unit>
HWY_INLINE void blendTint(std::uint8_t* first, std::ptrdiff_t stride, std::size_t bytes, std::size_t rows,
                          Tint const& tint)
{
    if (tint.weight == kFullWeight / 2) {
        blendTintRows<unit>(first, stride, bytes, rows, tint,
                            [&](auto access, auto d8, std::uint8_t* to) { blendHalfTintVector(access, d8, to, tint); });
    } else {
        blendTintRows<unit>(first, stride, bytes, rows, tint,
                            [&](auto access, auto d8, std::uint8_t* to) { blendTintVector(access, d8, to, tint); });
    }
}

void blendLumaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t level,
                   int weight)
{
    blendTint<1>(first, stride, width, rows, {level, level, weight});
}

void blendChromaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t pairs, std::size_t rows, std::uint8_t cb,
                     std::uint8_t cr, int weight)
{
    blendTint<2>(first, stride, 2 * pairs, rows, {cb, cr, weight});
}

void layCoverage(std::uint8_t* to, std::ptrdiff_t toStride, std::uint8_t const* from, std::ptrdiff_t fromStride,
                 std::size_t width, std::size_t rows)
{
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const under = to + static_cast<std::ptrdiff_t>(row) * toStride;
        auto const* const over = from + static_cast<std::ptrdiff_t>(row) * fromStride;
        walk<1>(
            under, width,
            [&](auto access, auto d8, std::ptrdiff_t i) {
                access.store(hn::Max(access.load(d8, under + i), access.load(d8, over + i)), d8, under + i);
            },
            [&](std::ptrdiff_t i) { under[i] = under[i] < over[i] ? over[i] : under[i]; });
    }
}

/// One vector of means: sums of two neighbours in 16-bit lanes, both rows, then the mean in both bytes of its lane.
template <class Access, class D8>
HWY_INLINE void halveVector(Access access, D8 d8, std::uint8_t const* HWY_RESTRICT upper,
                            std::uint8_t const* HWY_RESTRICT lower, std::uint8_t* HWY_RESTRICT to)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    auto const lowByte = hn::Set(d16, std::uint16_t{0x00FF});
    auto const a = hn::BitCast(d16, access.load(d8, upper));
    auto const b = hn::BitCast(d16, access.load(d8, lower));
    auto const sumA = hn::Add(hn::And(a, lowByte), hn::ShiftRight<8>(a));
    auto const sumB = hn::Add(hn::And(b, lowByte), hn::ShiftRight<8>(b));
    auto const mean = hn::ShiftRight<2>(hn::Add(hn::Add(sumA, sumB), hn::Set(d16, std::uint16_t{2})));
    access.store(hn::BitCast(d8, hn::Or(mean, hn::ShiftLeft<8>(mean))), d8, to);
}

void halveCoverage(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t pairs, std::uint8_t* to)
{
    walk<2>(
        upper, 2 * pairs,
        [&](auto access, auto d8, std::ptrdiff_t i) { halveVector(access, d8, upper + i, lower + i, to + i); },
        [&](std::ptrdiff_t i) { to[i] = to[i + 1] = meanOfFour(upper[i], upper[i + 1], lower[i], lower[i + 1]); });
}

#endif

}  // namespace
}  // namespace imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace imaging {

HWY_EXPORT(blendLumaSpans);
HWY_EXPORT(blendChromaSpans);
HWY_EXPORT(blendLumaRect);
HWY_EXPORT(blendChromaRect);
HWY_EXPORT(layCoverage);
HWY_EXPORT(halveCoverage);

void blendLumaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                    std::uint8_t level)
{
    HWY_DYNAMIC_DISPATCH(blendLumaSpans)(place, spans, count, coverage, level);
}

void blendChromaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                      std::uint8_t cb, std::uint8_t cr)
{
    HWY_DYNAMIC_DISPATCH(blendChromaSpans)(place, spans, count, coverage, cb, cr);
}

void blendLumaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t width, std::size_t rows, std::uint8_t level,
                   int weight)
{
    HWY_DYNAMIC_DISPATCH(blendLumaRect)(first, stride, width, rows, level, weight);
}

void blendChromaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t pairs, std::size_t rows, std::uint8_t cb,
                     std::uint8_t cr, int weight)
{
    HWY_DYNAMIC_DISPATCH(blendChromaRect)(first, stride, pairs, rows, cb, cr, weight);
}

void layCoverage(std::uint8_t* to, std::ptrdiff_t toStride, std::uint8_t const* from, std::ptrdiff_t fromStride,
                 std::size_t width, std::size_t rows)
{
    HWY_DYNAMIC_DISPATCH(layCoverage)(to, toStride, from, fromStride, width, rows);
}

void halveCoverage(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t pairs, std::uint8_t* to)
{
    HWY_DYNAMIC_DISPATCH(halveCoverage)(upper, lower, pairs, to);
}

}  // namespace imaging

#endif
