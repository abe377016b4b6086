// The readings that the page carries: from their packed form to numbers, and of these what a chart has room for.
'use strict';

const readings = (() => {
    const digits = new Uint8Array(128);
    [...'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/'].forEach((digit, value) => {
        digits[digit.charCodeAt(0)] = value;
    });

    // Calls back with each whole number of the lines: a sign bit, then five bits a character, the lowest first, with a sixth
    // for "another one follows".
    function forEachWhole(lines, take) {
        let whole = 0;
        let weight = 1;
        for (const line of lines) {
            for (let i = 0; i < line.length; ++i) {
                const digit = digits[line.charCodeAt(i)];
                whole += (digit & 31) * weight;
                if (digit & 32) {
                    weight *= 32;
                } else {
                    take(whole % 2 ? -(whole - 1) / 2 : whole / 2);
                    whole = 0;
                    weight = 1;
                }
            }
        }
    }

    // As many numbers as that; NaN where one is missing.
    function unpack(packed, count) {
        const numbers = new Float64Array(count);
        const factor = 10 ** packed.decimals;
        let sum = 0;
        let position = 0;
        let isRepeat = false;
        forEachWhole(packed.values, whole => {
            if (isRepeat) {
                numbers.fill(sum / factor, position, position + whole);
                position += whole;
            } else {
                sum += whole;
                numbers[position++] = sum / factor;
            }
            isRepeat = !isRepeat && whole === 0;
        });
        let end = 0;
        let isGap = false;
        forEachWhole(packed.gaps, whole => {
            if (isGap) {
                numbers.fill(NaN, end, end + whole);
            }
            end += whole;
            isGap = !isGap;
        });
        return numbers;
    }

    // How many of the ascending numbers are below the limit.
    function countBelow(numbers, limit) {
        let low = 0;
        let high = numbers.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (numbers[middle] < limit) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    // Adds the lowest and the highest of these readings, in their order.
    function addExtremes(thinned, values, start, end) {
        let lowest = start;
        let highest = start;
        for (let i = start + 1; i < end; ++i) {
            if (values[i] < values[lowest] || Number.isNaN(values[lowest])) {
                lowest = i;
            }
            if (values[i] > values[highest] || Number.isNaN(values[highest])) {
                highest = i;
            }
        }
        const orNothing = value => Number.isNaN(value) ? null : value;
        thinned.push(orNothing(values[Math.min(lowest, highest)]));
        if (end - start > 1) {
            thinned.push(orNothing(values[Math.max(lowest, highest)]));
        }
    }

    // Of the readings between two moments, and the one on each side, what a chart of that many pixels shows: all, or of those
    // that fall on one pixel the lowest and the highest of each series. Rows as uPlot takes them.
    function thin(seconds, columns, from, to, pixels) {
        const first = Math.max(countBelow(seconds, from) - 1, 0);
        const end = Math.min(countBelow(seconds, to) + 2, seconds.length);
        const isFew = end - first <= 2 * pixels;
        const pixelOf = moment => isFew ? moment : Math.floor((seconds[moment] - from) / (to - from) * pixels);
        const rows = [[], ...columns.map(() => [])];
        for (let start = first, next; start < end; start = next) {
            const pixel = pixelOf(start);
            for (next = start + 1; next < end && pixelOf(next) === pixel; ++next);
            rows[0].push(seconds[start]);
            if (next - start > 1) {
                rows[0].push(seconds[next - 1]);
            }
            columns.forEach((values, column) => addExtremes(rows[column + 1], values, start, next));
        }
        return rows;
    }

    // Of points that would be drawn within one small square of a chart of that many pixels, the first; those farthest out
    // in every direction always.
    function thinPoints(points, width, height) {
        const square = 2;
        const enough = 5000;
        if (points.length <= enough) {
            return points;
        }
        const outermost = [0, 1].flatMap(axis => [
            points.reduce((best, point) => point[axis] < best[axis] ? point : best),
            points.reduce((best, point) => point[axis] > best[axis] ? point : best),
        ]);
        const place = (point, axis, pixels) => {
            const low = outermost[2 * axis][axis];
            const span = outermost[2 * axis + 1][axis] - low || 1;
            return Math.floor((point[axis] - low) / span * pixels / square);
        };
        const kept = new Map();
        for (const point of points) {
            const cell = place(point, 0, width) * (height + 1) + place(point, 1, height);
            if (!kept.has(cell)) {
                kept.set(cell, point);
            }
        }
        return [...new Set([...outermost, ...kept.values()])];
    }

    return {unpack, countBelow, thin, thinPoints};
})();
