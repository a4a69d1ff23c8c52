// The pixel loops in vector form. This unit is compiled once for each vector instruction set that Highway
// knows for the processor family; the form to run is chosen at run time.
//
// Bytes are never widened: a 16-bit lane holds two neighbouring bytes, and the lower and the upper byte are
// computed each in the whole lane. under * (256 - w) + over * w is under * 256 + (over - under) * w, whose
// true value fits 16 unsigned bits although its second term alone wraps.
#include "nv12_blend.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "nv12_blend.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace imaging::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

// A processor without vectors runs the definition itself.
using plain::blendChromaSpans;
using plain::blendLumaSpans;
using plain::halveCoverage;
using plain::layCoverage;

void blendEvenRows(std::uint8_t* first, std::ptrdiff_t stride, std::size_t bytes, std::size_t rows, std::uint8_t even,
                   std::uint8_t odd, int weight)
{
    if (even == odd) {
        plain::blendLumaRect(first, stride, bytes, rows, even, weight);
    } else {
        plain::blendChromaRect(first, stride, bytes / 2, rows, even, odd, weight);
    }
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Bytes = hn::ScalableTag<std::uint8_t>;
using ShortBytes = hn::CappedTag<std::uint8_t, 16>;

/// Blends the two bytes of each 16-bit lane of `under` towards `lowOver` and `highOver`.
template <class V>
HWY_INLINE V blendLanes(V under, V lowOver, V highOver, V lowWeight, V highWeight)
{
    hn::DFromV<V> const d;
    auto const lowByte = hn::Set(d, std::uint16_t{0x00FF});
    auto const highByte = hn::Set(d, std::uint16_t{0xFF00});
    auto const half = hn::Set(d, std::uint16_t{128});
    auto const lowRise = hn::Mul(hn::Sub(lowOver, hn::And(under, lowByte)), lowWeight);
    auto const highRise = hn::Mul(hn::Sub(highOver, hn::ShiftRight<8>(under)), highWeight);
    auto const low = hn::Add(hn::Or(hn::ShiftLeft<8>(under), half), lowRise);
    auto const high = hn::Add(hn::Or(hn::And(under, highByte), half), highRise);
    return hn::Or(hn::ShiftRight<8>(low), hn::And(high, highByte));
}

template <class V>
HWY_INLINE V weightsOf(V coverage)
{
    return hn::Add(coverage, hn::ShiftRight<7>(coverage));
}

/// One vector of luma at `luma`; nothing is written where nothing is covered.
template <class D8>
HWY_INLINE void blendLumaVector(D8 d8, std::uint8_t* HWY_RESTRICT luma, std::uint8_t const* HWY_RESTRICT coverage,
                                std::uint8_t level)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    auto const covered = hn::LoadU(d8, coverage);
    if (hn::AllTrue(d8, hn::Eq(covered, hn::Zero(d8)))) {
        return;
    }
    auto const under = hn::BitCast(d16, hn::LoadU(d8, luma));
    auto const both = hn::BitCast(d16, covered);
    auto const over = hn::Set(d16, std::uint16_t{level});
    auto const lowWeight = weightsOf(hn::And(both, hn::Set(d16, std::uint16_t{0x00FF})));
    auto const highWeight = weightsOf(hn::ShiftRight<8>(both));
    hn::StoreU(hn::BitCast(d8, blendLanes(under, over, over, lowWeight, highWeight)), d8, luma);
}

/// One vector of chroma pairs; the coverage is half a vector.
template <class D8>
HWY_INLINE void blendChromaVector(D8 d8, std::uint8_t* HWY_RESTRICT chroma, std::uint8_t const* HWY_RESTRICT coverage,
                                  std::uint8_t cb, std::uint8_t cr)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    hn::Half<D8> const dHalf;
    auto const covered = hn::LoadU(dHalf, coverage);
    if (hn::AllTrue(dHalf, hn::Eq(covered, hn::Zero(dHalf)))) {
        return;
    }
    auto const weight = weightsOf(hn::PromoteTo(d16, covered));
    auto const under = hn::BitCast(d16, hn::LoadU(d8, chroma));
    auto const mixed =
        blendLanes(under, hn::Set(d16, std::uint16_t{cb}), hn::Set(d16, std::uint16_t{cr}), weight, weight);
    hn::StoreU(hn::BitCast(d8, mixed), d8, chroma);
}

void blendLumaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                    std::uint8_t level)
{
    Bytes const d8;
    ShortBytes const dShort;
    std::size_t const step = hn::Lanes(d8);
    std::size_t const shortStep = hn::Lanes(dShort);
    for (Span const* span = spans; span != spans + count; ++span) {
        auto* const luma = place.plane + (place.origin + span->row * place.stride + span->column);
        auto const* const covered = coverage + span->offset;
        auto const length = static_cast<std::size_t>(span->length);
        std::size_t i = 0;
        for (; i + step <= length; i += step) {
            blendLumaVector(d8, luma + i, covered + i, level);
        }
        for (; i + shortStep <= length; i += shortStep) {
            blendLumaVector(dShort, luma + i, covered + i, level);
        }
        for (; i < length; ++i) {
            luma[i] = blendLevel(luma[i], level, weightOf(covered[i]));
        }
    }
}

void blendChromaSpans(PlanePlace const& place, Span const* spans, std::size_t count, std::uint8_t const* coverage,
                      std::uint8_t cb, std::uint8_t cr)
{
    Bytes const d8;
    ShortBytes const dShort;
    std::size_t const step = hn::Lanes(d8) / 2;
    std::size_t const shortStep = hn::Lanes(dShort) / 2;
    for (Span const* span = spans; span != spans + count; ++span) {
        auto* const chroma = place.plane + (place.origin + span->row * place.stride + std::ptrdiff_t{2} * span->column);
        auto const* const covered = coverage + span->offset;
        auto const length = static_cast<std::size_t>(span->length);
        std::size_t i = 0;
        for (; i + step <= length; i += step) {
            blendChromaVector(d8, chroma + 2 * i, covered + i, cb, cr);
        }
        for (; i + shortStep <= length; i += shortStep) {
            blendChromaVector(dShort, chroma + 2 * i, covered + i, cb, cr);
        }
        for (; i < length; ++i) {
            int const weight = weightOf(covered[i]);
            chroma[2 * i] = blendLevel(chroma[2 * i], cb, weight);
            chroma[2 * i + 1] = blendLevel(chroma[2 * i + 1], cr, weight);
        }
    }
}

/// One vector blended towards constants; `lowSum` and `highSum` are over * weight + 128.
template <class D8>
HWY_INLINE void blendEvenVector(D8 d8, std::uint8_t* HWY_RESTRICT bytes, int remaining, int lowSum, int highSum)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    auto const keep = hn::Set(d16, static_cast<std::uint16_t>(remaining));
    auto const under = hn::BitCast(d16, hn::LoadU(d8, bytes));
    auto const lowByte = hn::And(under, hn::Set(d16, std::uint16_t{0x00FF}));
    auto const low = hn::Add(hn::Mul(lowByte, keep), hn::Set(d16, static_cast<std::uint16_t>(lowSum)));
    auto const high =
        hn::Add(hn::Mul(hn::ShiftRight<8>(under), keep), hn::Set(d16, static_cast<std::uint16_t>(highSum)));
    auto const mixed = hn::Or(hn::ShiftRight<8>(low), hn::And(high, hn::Set(d16, std::uint16_t{0xFF00})));
    hn::StoreU(hn::BitCast(d8, mixed), d8, bytes);
}

/// Rows of bytes whose even ones tend to `even` and whose odd ones tend to `odd`, counted from the row's start.
void blendEvenRows(std::uint8_t* first, std::ptrdiff_t stride, std::size_t bytes, std::size_t rows, std::uint8_t even,
                   std::uint8_t odd, int weight)
{
    Bytes const d8;
    ShortBytes const dShort;
    std::size_t const step = hn::Lanes(d8);
    std::size_t const shortStep = hn::Lanes(dShort);
    int const remaining = kFullWeight - weight;
    int const evenSum = even * weight + 128;
    int const oddSum = odd * weight + 128;
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const to = first + static_cast<std::ptrdiff_t>(row) * stride;
        std::size_t i = 0;
        for (; i + step <= bytes; i += step) {
            blendEvenVector(d8, to + i, remaining, evenSum, oddSum);
        }
        for (; i + shortStep <= bytes; i += shortStep) {
            blendEvenVector(dShort, to + i, remaining, evenSum, oddSum);
        }
        for (; i < bytes; ++i) {
            to[i] = blendLevel(to[i], i % 2 == 0 ? even : odd, weight);
        }
    }
}

void layCoverage(std::uint8_t* to, std::ptrdiff_t toStride, std::uint8_t const* from, std::ptrdiff_t fromStride,
                 std::size_t width, std::size_t rows)
{
    Bytes const d8;
    ShortBytes const dShort;
    std::size_t const step = hn::Lanes(d8);
    std::size_t const shortStep = hn::Lanes(dShort);
    for (std::size_t row = 0; row < rows; ++row) {
        auto* const under = to + static_cast<std::ptrdiff_t>(row) * toStride;
        auto const* const over = from + static_cast<std::ptrdiff_t>(row) * fromStride;
        std::size_t i = 0;
        for (; i + step <= width; i += step) {
            hn::StoreU(hn::Max(hn::LoadU(d8, under + i), hn::LoadU(d8, over + i)), d8, under + i);
        }
        for (; i + shortStep <= width; i += shortStep) {
            hn::StoreU(hn::Max(hn::LoadU(dShort, under + i), hn::LoadU(dShort, over + i)), dShort, under + i);
        }
        for (; i < width; ++i) {
            under[i] = under[i] < over[i] ? over[i] : under[i];
        }
    }
}

/// `pairs` of at most one vector: sums of two neighbours in 16-bit lanes, both rows, then back to bytes.
template <class D8>
HWY_INLINE void halveVector(D8 d8, std::uint8_t const* HWY_RESTRICT upper, std::uint8_t const* HWY_RESTRICT lower,
                            std::uint8_t* HWY_RESTRICT to)
{
    hn::Repartition<std::uint16_t, D8> const d16;
    hn::Half<D8> const dHalf;
    auto const lowByte = hn::Set(d16, std::uint16_t{0x00FF});
    auto const a = hn::BitCast(d16, hn::LoadU(d8, upper));
    auto const b = hn::BitCast(d16, hn::LoadU(d8, lower));
    auto const sumA = hn::Add(hn::And(a, lowByte), hn::ShiftRight<8>(a));
    auto const sumB = hn::Add(hn::And(b, lowByte), hn::ShiftRight<8>(b));
    auto const sum = hn::Add(hn::Add(sumA, sumB), hn::Set(d16, std::uint16_t{2}));
    hn::StoreU(hn::DemoteTo(dHalf, hn::BitCast(hn::RebindToSigned<decltype(d16)>(), hn::ShiftRight<2>(sum))), dHalf,
               to);
}

void halveCoverage(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t pairs, std::uint8_t* to)
{
    Bytes const d8;
    ShortBytes const dShort;
    std::size_t const step = hn::Lanes(d8) / 2;
    std::size_t const shortStep = hn::Lanes(dShort) / 2;
    std::size_t i = 0;
    for (; i + step <= pairs; i += step) {
        halveVector(d8, upper + 2 * i, lower + 2 * i, to + i);
    }
    for (; i + shortStep <= pairs; i += shortStep) {
        halveVector(dShort, upper + 2 * i, lower + 2 * i, to + i);
    }
    for (; i < pairs; ++i) {
        to[i] = meanOfFour(upper[2 * i], upper[2 * i + 1], lower[2 * i], lower[2 * i + 1]);
    }
}

#endif

}  // namespace
}  // namespace imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace imaging {

HWY_EXPORT(blendLumaSpans);
HWY_EXPORT(blendChromaSpans);
HWY_EXPORT(blendEvenRows);
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
    HWY_DYNAMIC_DISPATCH(blendEvenRows)(first, stride, width, rows, level, level, weight);
}

void blendChromaRect(std::uint8_t* first, std::ptrdiff_t stride, std::size_t pairs, std::size_t rows, std::uint8_t cb,
                     std::uint8_t cr, int weight)
{
    HWY_DYNAMIC_DISPATCH(blendEvenRows)(first, stride, 2 * pairs, rows, cb, cr, weight);
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
