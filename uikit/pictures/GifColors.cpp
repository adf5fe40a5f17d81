#include "uikit/pictures/GifColors.h"

#include <QHash>

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

constexpr int kMaxColors = 255;
constexpr int kBitsPerChannel = 6;
constexpr int kRounds = 2;

std::size_t binKey(QRgb color)
{
    constexpr unsigned kDrop = 8 - kBitsPerChannel;
    auto const part = [](int channel) { return static_cast<unsigned>(channel) >> kDrop; };
    return (part(qRed(color)) << (2 * kBitsPerChannel)) | (part(qGreen(color)) << kBitsPerChannel) |
           part(qBlue(color));
}

template <typename Visit>
void forEachPixel(QImage const& image, Visit visit)
{
    for (int y = 0; y < image.height(); ++y) {
        auto const* line = reinterpret_cast<QRgb const*>(image.constScanLine(y));
        std::for_each(line, line + image.width(), visit);
    }
}

QRgb toRgb(float const (&channels)[3])
{
    return qRgb(qRound(channels[0]), qRound(channels[1]), qRound(channels[2]));
}

} // namespace

GifColors::Picture GifColors::reduce(QImage const& image)
{
    Picture picture;
    picture.colors.append(qRgba(0, 0, 0, 0));
    picture.indexes.reserve(qsizetype{image.width()} * image.height());
    if (reduceExactly(image, picture)) {
        return picture;
    }

    picture.colors.resize(1);
    picture.indexes.clear();
    fillBins(image);
    auto colors = splitBoxes();
    for (int round = 0; round < kRounds; ++round) {
        assignNearest(colors);
    }

    for (auto const& color : colors) {
        picture.colors.append(toRgb(color.channels));
    }
    forEachPixel(image, [&](QRgb pixel) {
        auto const index = qAlpha(pixel) == 0 ? 0 : bins[binOfColor[binKey(pixel)] - 1].index + 1;
        picture.indexes.append(static_cast<char>(index));
    });
    return picture;
}

bool GifColors::reduceExactly(QImage const& image, Picture& picture) const
{
    QHash<QRgb, char> known;
    bool fits = true;
    for (int y = 0; y < image.height() && fits; ++y) {
        auto const* line = reinterpret_cast<QRgb const*>(image.constScanLine(y));
        for (int x = 0; x < image.width() && fits; ++x) {
            if (qAlpha(line[x]) == 0) {
                picture.indexes.append('\0');
                continue;
            }
            QRgb const color = line[x] | 0xFF000000U;
            auto const found = known.constFind(color);
            if (found != known.constEnd()) {
                picture.indexes.append(*found);
                continue;
            }
            auto const index = static_cast<char>(picture.colors.size());
            fits = picture.colors.size() <= kMaxColors;
            known.insert(color, index);
            picture.colors.append(color);
            picture.indexes.append(index);
        }
    }
    return fits;
}

void GifColors::fillBins(QImage const& image)
{
    binOfColor.assign(std::size_t{1} << (3 * kBitsPerChannel), 0);
    bins.clear();
    forEachPixel(image, [this](QRgb pixel) {
        if (qAlpha(pixel) == 0) {
            return;
        }
        auto& number = binOfColor[binKey(pixel)];
        if (number == 0) {
            bins.emplace_back();
            number = static_cast<quint32>(bins.size());
        }
        auto& bin = bins[number - 1];
        bin.count += 1;
        bin.channels[0] += static_cast<float>(qRed(pixel));
        bin.channels[1] += static_cast<float>(qGreen(pixel));
        bin.channels[2] += static_cast<float>(qBlue(pixel));
    });
    for (auto& bin : bins) {
        for (auto& channel : bin.channels) {
            channel /= bin.count;
        }
    }
}

GifColors::Box GifColors::measured(std::size_t begin, std::size_t end) const
{
    Box box{.begin = begin, .end = end};
    double count = 0;
    double sum[3] = {};
    double squares[3] = {};
    for (auto i = begin; i < end; ++i) {
        auto const& bin = bins[order[i]];
        count += bin.count;
        for (int axis = 0; axis < 3; ++axis) {
            double const value = bin.channels[axis];
            sum[axis] += bin.count * value;
            squares[axis] += bin.count * value * value;
        }
    }
    double worst = -1;
    for (int axis = 0; axis < 3; ++axis) {
        double const error = squares[axis] - sum[axis] * sum[axis] / count;
        box.error += error;
        if (error > worst) {
            worst = error;
            box.axis = axis;
            box.middle = static_cast<float>(sum[axis] / count);
        }
    }
    // What is left of a single bin is rounding.
    if (end - begin < 2) {
        box.error = 0;
    }
    return box;
}

std::vector<GifColors::Bin> GifColors::splitBoxes()
{
    order.resize(bins.size());
    std::iota(order.begin(), order.end(), 0U);

    auto const lessError = [](Box const& a, Box const& b) { return a.error < b.error; };
    std::vector<Box> boxes{measured(0, bins.size())};
    while (boxes.size() < kMaxColors && boxes.front().error > 0) {
        std::pop_heap(boxes.begin(), boxes.end(), lessError);
        auto const box = boxes.back();
        boxes.pop_back();
        auto const at = [this](std::size_t i) { return order.begin() + static_cast<std::ptrdiff_t>(i); };
        auto const cut = std::partition(at(box.begin), at(box.end),
            [&](quint32 bin) { return bins[bin].channels[box.axis] <= box.middle; });
        auto const middle = static_cast<std::size_t>(cut - order.begin());
        // Rounding of the mean may leave one side empty: then there is nothing worth a split.
        if (middle == box.begin || middle == box.end) {
            boxes.push_back(box);
            boxes.back().error = 0;
            std::push_heap(boxes.begin(), boxes.end(), lessError);
            continue;
        }
        for (auto const& half : {measured(box.begin, middle), measured(middle, box.end)}) {
            boxes.push_back(half);
            std::push_heap(boxes.begin(), boxes.end(), lessError);
        }
    }

    std::vector<Bin> colors;
    for (auto const& box : boxes) {
        Bin color;
        for (auto i = box.begin; i < box.end; ++i) {
            auto const& bin = bins[order[i]];
            color.count += bin.count;
            for (int axis = 0; axis < 3; ++axis) {
                color.channels[axis] += bin.count * bin.channels[axis];
            }
        }
        for (auto& channel : color.channels) {
            channel /= color.count;
        }
        colors.push_back(color);
    }
    return colors;
}

void GifColors::assignNearest(std::vector<Bin>& colors)
{
    // In the order of green, the search of a bin starts at its own green and ends where green alone is
    // farther off than the best colour so far.
    std::sort(colors.begin(), colors.end(),
        [](Bin const& a, Bin const& b) { return a.channels[1] < b.channels[1]; });
    auto const isDarker = [](Bin const& color, float green) { return color.channels[1] < green; };

    std::vector<Bin> next(colors.size());
    for (auto& bin : bins) {
        auto best = std::numeric_limits<float>::max();
        auto const consider = [&](std::ptrdiff_t i) {
            float distance[3];
            for (int axis = 0; axis < 3; ++axis) {
                distance[axis] = colors[static_cast<std::size_t>(i)].channels[axis] - bin.channels[axis];
            }
            float const green = distance[1] * distance[1];
            if (green >= best) {
                return false;
            }
            float const all = green + distance[0] * distance[0] + distance[2] * distance[2];
            if (all < best) {
                best = all;
                bin.index = static_cast<quint8>(i);
            }
            return true;
        };
        auto const start =
            std::lower_bound(colors.begin(), colors.end(), bin.channels[1], isDarker) - colors.begin();
        for (auto i = start; i < std::ssize(colors) && consider(i); ++i) {
        }
        for (auto i = start - 1; i >= 0 && consider(i); --i) {
        }

        auto& color = next[bin.index];
        color.count += bin.count;
        for (int axis = 0; axis < 3; ++axis) {
            color.channels[axis] += bin.count * bin.channels[axis];
        }
    }
    for (std::size_t i = 0; i < colors.size(); ++i) {
        if (next[i].count > 0) {
            for (int axis = 0; axis < 3; ++axis) {
                colors[i].channels[axis] = next[i].channels[axis] / next[i].count;
            }
        }
    }
}
