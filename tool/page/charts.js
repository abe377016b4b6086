// Charts as the tool's pages have them. They are drawn by uPlot, whose script stands before this one.
'use strict';

const charts = (() => {
    const height = 240;

    // Colours are asked for at every drawing, so that a change between light and dark needs nothing but that.
    const colour = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const seriesColour = index => `--series-${index % 4 + 1}`;
    const translucent = (name, opacity) => colour(name) + opacity;

    const number = new Intl.NumberFormat('en', {maximumFractionDigits: 2, useGrouping: false});
    const text = value => number.format(value);
    const inUnit = (value, unit) => value == null ? '–' : `${text(value)} ${unit}`;
    const numbers = (chart, splits) => splits.map(text);

    const axis = options => ({
        stroke: () => colour('--muted'),
        font: '12px system-ui, sans-serif',
        labelFont: '12px system-ui, sans-serif',
        labelSize: 18,
        labelGap: 0,
        grid: {stroke: () => colour('--grid'), width: 1},
        ticks: {stroke: () => colour('--grid'), width: 1, size: 5},
        ...options,
    });

    const legend = {
        markers: {
            width: 0,
            fill: (chart, index) => `var(${chart.series[index].colourName ?? '--muted'})`,
        },
    };

    // A little room above and below, and a line that never changes in the middle.
    function valueRange(chart, low, high) {
        if (low == null || (low === 0 && high === 0)) {
            return [0, 10];
        }
        const span = Math.max(high - low, Math.abs(high) * 0.04, 1);
        const bottom = low - (span - (high - low)) / 2 - span * 0.08;
        return [low >= 0 ? Math.max(0, bottom) : bottom, high + (span - (high - low)) / 2 + span * 0.08];
    }

    function addCard(grid, title, remark) {
        const card = document.createElement('div');
        card.className = 'chart';
        const heading = document.createElement('h3');
        heading.textContent = title;
        if (remark) {
            const small = document.createElement('small');
            small.textContent = ` ${remark}`;
            heading.append(small);
        }
        card.append(heading);
        grid.append(card);
        return card;
    }

    function innerWidth(card) {
        const style = getComputedStyle(card);
        return Math.floor(card.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight));
    }

    // `description` is for those who do not see the chart. `onResize` is called when the chart has another width.
    function add(card, description, options, data, onResize = () => {}) {
        const chart = new uPlot({width: innerWidth(card), height, padding: [8, null, null, null], legend, ...options}, data, card);
        const canvas = chart.ctx.canvas;
        canvas.setAttribute('role', 'img');
        canvas.setAttribute('aria-label', description);
        new ResizeObserver(() => {
            const width = innerWidth(card);
            if (width > 0 && width !== chart.width) {
                chart.setSize({width, height: chart.height});
                onResize();
            }
        }).observe(card);
        return chart;
    }

    // What a chart over the time has beside its row of times: for each unit a scale and an axis, the first at the left;
    // for each series {title, unit, dashed, muted} a line.
    function overTime(members) {
        const units = [...new Set(members.map(one => one.unit))];
        return {
            scales: Object.fromEntries(units.map(unit => [unit, {range: valueRange}])),
            axes: units.map((unit, index) => axis({
                scale: unit,
                label: unit,
                side: index === 0 ? 3 : 1,
                size: 52,
                grid: {show: index === 0, stroke: () => colour('--grid'), width: 1},
                values: numbers,
            })),
            series: members.map((one, index) => {
                const name = one.muted ? '--muted' : seriesColour(index);
                return {
                    label: one.title,
                    scale: one.unit,
                    colourName: name,
                    stroke: () => colour(name),
                    width: 1.75,
                    dash: one.dashed ? [6, 5] : [],
                    fill: members.length === 1 && !one.dashed ? () => translucent(name, '22') : undefined,
                    points: {size: 5, fill: () => colour(name)},
                    value: (chart, value) => inUnit(value, one.unit),
                };
            }),
        };
    }

    // The fan over the temperature. uPlot wants one ascending row of x values: readings, as pairs of temperature and speed,
    // and points of the board's curve are merged into it.
    function fanData(points, curve) {
        const rows = [...points.map(([x, y]) => [x, y, null]), ...curve.map(([x, y]) => [x, null, y])];
        rows.sort((one, other) => one[0] - other[0]);
        return [0, 1, 2].slice(0, curve.length > 0 ? 3 : 2).map(column => rows.map(row => row[column]));
    }

    function nearest(chart, index, x) {
        let best = null;
        chart.data[index].forEach((value, at) => {
            if (value != null && (best == null || Math.abs(chart.data[0][at] - x) < Math.abs(chart.data[0][best] - x))) {
                best = at;
            }
        });
        return best;
    }

    // `temperature` and `speed` are series. `data` is of fanData(), and keeps having a curve or keeps having none.
    function addFan(card, description, temperature, speed, data, onResize) {
        // The curve is in percent; a board that tells its fan's speed in other units gets a second axis.
        const curveScale = '%';
        const series = [
            {label: temperature.title, value: (self, value) => inUnit(value, '°C')},
            {
                label: speed.title,
                scale: speed.unit,
                colourName: seriesColour(0),
                paths: () => null,
                stroke: () => colour(seriesColour(0)),
                points: {
                    show: true,
                    size: 6,
                    width: 0,
                    fill: () => translucent(seriesColour(0), '88'),
                },
                value: (self, value) => inUnit(value, speed.unit),
            },
        ];
        const scales = {
            x: {time: false, range: (self, low, high) => low == null ? [0, 100] : valueRange(self, low, high)},
            [speed.unit]: {range: (self, low, high) => speed.unit === '%' ? [0, 102] : [0, Math.max(high ?? 0, 1) * 1.08]},
        };
        const axes = [
            axis({label: `${temperature.title}, °C`, size: 28, values: numbers}),
            axis({scale: speed.unit, label: `fan speed, ${speed.unit}`, size: 52, values: numbers}),
        ];
        if (data.length > 2) {
            series.push({
                label: 'Curve',
                scale: curveScale,
                colourName: '--curve',
                spanGaps: true,
                stroke: () => colour('--curve'),
                width: 1.75,
                dash: [6, 5],
                points: {show: true, size: 7, width: 0, fill: () => colour('--curve')},
                value: (self, value) => inUnit(value, '%'),
            });
            if (speed.unit !== curveScale) {
                scales[curveScale] = {range: () => [0, 102]};
                axes.push(axis({scale: curveScale, label: 'curve, %', side: 1, size: 52, grid: {show: false}}));
            }
        }
        return add(card, description, {
            scales,
            axes,
            series,
            cursor: {
                drag: {x: false, y: false},
                points: {size: 9, width: 0},
                // The nearest reading in either series, not only what shares its temperature.
                dataIdx: (self, index, closest, x) => self.data[index][closest] != null ? closest : nearest(self, index, x),
            },
        }, data, onResize);
    }

    // Calls back when light and dark change places.
    const onScheme = redraw => matchMedia('(prefers-color-scheme: dark)').addEventListener('change', redraw);

    return {height, seriesColour, text, inUnit, axis, addCard, innerWidth, add, overTime, fanData, addFan, onScheme};
})();
