#include "uikit/pictures/Resampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int kChannels = 4;
constexpr int kAlpha = 3;
constexpr float kOpaque = 255;
constexpr int kLobes = 3;

double lanczos(double x)
{
    double const angle = std::numbers::pi * x;
    return x == 0 ? 1 : kLobes * std::sin(angle) * std::sin(angle / kLobes) / (angle * angle);
}

double mitchell(double x)
{
    double const t = std::abs(x);
    return t < 1 ? ((7 * t - 12) * t * t + 16.0 / 3) / 6
                 : (((-7.0 / 3 * t + 12) * t - 20) * t + 32.0 / 3) / 6;
}

bool isOpaque(QImage const& picture)
{
    int const end = picture.width() * kChannels;
    uchar all = 0xFF;
    for (int y = 0; y < picture.height(); ++y) {
        auto const* line = picture.constScanLine(y);
        for (int at = kAlpha; at < end; at += kChannels) {
            all &= line[at];
        }
    }
    return all == 0xFF;
}

} // namespace

Resampler::Resampler(QSize const& from, QSize const& to) : size(to)
{
    if (from != to) { // else the kernels are not used
        Kernel const sharp{.weight = &lanczos, .support = kLobes};
        Kernel const soft{.weight = &mitchell, .support = 2};
        sharpColumns = taps(from.width(), to.width(), sharp);
        sharpRows = taps(from.height(), to.height(), sharp);
        softColumns = taps(from.width(), to.width(), soft);
        softRows = taps(from.height(), to.height(), soft);
    }
}

Resampler::Taps Resampler::taps(int from, int to, Kernel const& kernel)
{
    double const step = static_cast<double>(from) / to;
    double const scale = std::max(step, 1.0);
    double const support = scale * kernel.support;
    Taps result(static_cast<std::size_t>(to));
    double middle = step / 2;
    for (auto& tap : result) {
        tap.first = std::max(0, qRound(middle - support));
        int const end = std::min(from, qRound(middle + support));
        double sum = 0;
        for (int at = tap.first; at < end; ++at) {
            double const weight = kernel.weight((at + 0.5 - middle) / scale);
            tap.weights.push_back(static_cast<float>(weight));
            sum += weight;
        }
        for (auto& weight : tap.weights) {
            weight /= static_cast<float>(sum);
        }
        middle += step;
    }
    return result;
}

//! Adds one line of the picture times \a weight, colours times their alpha. Loops without a branch, for the
//! compiler to vectorise.
template <bool isOpaque>
void Resampler::addLine(uchar const* line, float weight, std::vector<float>& sum)
{
    if constexpr (isOpaque) {
        for (std::size_t at = 0; at < sum.size(); ++at) {
            sum[at] += weight * static_cast<float>(line[at]);
        }
    } else {
        for (std::size_t at = 0; at < sum.size(); at += kChannels) {
            float const alpha = weight * static_cast<float>(line[at + kAlpha]);
            for (std::size_t channel = 0; channel < kAlpha; ++channel) {
                sum[at + channel] += alpha * static_cast<float>(line[at + channel]) / kOpaque;
            }
            sum[at + kAlpha] += alpha;
        }
    }
}

void Resampler::putPixel(std::vector<float> const& line, Tap const& tap, uchar* pixel)
{
    float sum[kChannels] = {};
    auto const* from = line.data() + std::ptrdiff_t{tap.first} * kChannels;
    for (float const weight : tap.weights) {
        for (int channel = 0; channel < kChannels; ++channel) {
            sum[channel] += weight * from[channel];
        }
        from += kChannels;
    }
    float const alpha = std::clamp(sum[kAlpha], 0.0F, kOpaque);
    for (int channel = 0; channel < kChannels; ++channel) {
        float const value = channel == kAlpha ? alpha : alpha > 0 ? sum[channel] * (kOpaque / alpha) : 0;
        pixel[channel] = static_cast<uchar>(qRound(std::clamp(value, 0.0F, kOpaque)));
    }
}

QImage Resampler::scaled(QImage const& picture) const
{
    if (picture.size() == size) {
        return picture;
    }
    bool const isSharp = isOpaque(picture);
    auto const add = isSharp ? &addLine<true> : &addLine<false>;
    QImage result(size, QImage::Format_RGBA8888);
    if (result.isNull()) {
        return result;
    }
    std::vector<float> line(static_cast<std::size_t>(picture.width()) * kChannels);
    int y = 0;
    for (auto const& row : isSharp ? sharpRows : softRows) {
        std::ranges::fill(line, 0.0F);
        int from = row.first;
        for (float const weight : row.weights) {
            add(picture.constScanLine(from++), weight, line);
        }
        auto* pixel = result.scanLine(y++);
        for (auto const& column : isSharp ? sharpColumns : softColumns) {
            putPixel(line, column, pixel);
            pixel += kChannels;
        }
    }
    return result;
}
