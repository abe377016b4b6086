// Draws the recording that the page carries: a chart for each quantity over the time, and the fan over the temperature.
'use strict';

(() => {
    const recording = JSON.parse(document.getElementById('recording').textContent);
    const seconds = readings.unpack(recording.seconds, recording.count);
    const allSeries = recording.groups.flatMap(group => group.series);
    for (const series of allSeries) {
        series.values = readings.unpack(series.numbers, recording.count);
    }
    const grid = document.getElementById('grid');
    const reset = document.getElementById('reset');
    const period = document.getElementById('period');
    const chartHeight = 240;

    // Colours are asked for at every drawing, so that a change between light and dark needs nothing but that.
    const colour = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const seriesColour = index => `--series-${index % 4 + 1}`;
    const translucent = (name, opacity) => colour(name) + opacity;

    const number = new Intl.NumberFormat('en', {maximumFractionDigits: 2, useGrouping: false});
    const inUnit = (value, unit) => value == null ? '–' : `${number.format(value)} ${unit}`;

    // 3725.5 seconds are "1:02:05.5".
    function elapsed(seconds) {
        const tenths = Math.round(seconds * 10);
        const whole = Math.floor(tenths / 10);
        const pad = value => String(value).padStart(2, '0');
        const hours = Math.floor(whole / 3600);
        const minutes = Math.floor(whole / 60) % 60;
        const fraction = tenths % 10 ? `.${tenths % 10}` : '';
        return (hours ? `${hours}:${pad(minutes)}` : minutes) + `:${pad(whole % 60)}${fraction}`;
    }

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

    function addCard(title, remark) {
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

    // A chart is given as much data as it has pixels for.
    const pixels = length => Math.max(Math.ceil(length * devicePixelRatio), 1);

    function addChart(card, title, options, data, onResize) {
        const chart = new uPlot({width: innerWidth(card), height: chartHeight, padding: [8, null, null, null], legend, ...options}, data, card);
        const canvas = chart.ctx.canvas;
        canvas.setAttribute('role', 'img');
        canvas.setAttribute('aria-label', `${title}; its figures are in the summary`);
        new ResizeObserver(() => {
            const width = innerWidth(card);
            if (width > 0 && width !== chart.width) {
                chart.setSize({width, height: chartHeight});
                onResize();
            }
        }).observe(card);
        return chart;
    }

    // --- over the time ---

    const whole = {min: seconds[0], max: Math.max(seconds[seconds.length - 1], seconds[0] + 1)};
    const timeCharts = [];
    let shown = {...whole};
    let onPeriod = () => {};

    // All charts show the same period.
    function show(min, max) {
        shown = {min: Math.max(min, whole.min), max: Math.min(max, whole.max)};
        for (const chart of timeCharts) {
            chart.update();
        }
        const zoomed = shown.min > whole.min || shown.max < whole.max;
        reset.disabled = !zoomed;
        period.textContent = zoomed ? `${elapsed(shown.min)} to ${elapsed(shown.max)}` : '';
        onPeriod();
    }

    function timeChart(group) {
        const units = [...new Set(group.series.map(series => series.unit))];
        const scales = {x: {time: false, range: () => [shown.min, shown.max]}};
        const axes = [axis({
            label: 'time since the start',
            size: 28,
            incrs: [0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 28800, 86400],
            values: (chart, splits) => splits.map(elapsed),
        })];
        units.forEach((unit, index) => {
            scales[unit] = {range: valueRange};
            axes.push(axis({
                scale: unit,
                label: unit,
                side: index === 0 ? 3 : 1,
                size: 52,
                grid: {show: index === 0, stroke: () => colour('--grid'), width: 1},
                values: (chart, splits) => splits.map(value => number.format(value)),
            }));
        });
        const series = group.series.map((one, index) => {
            const name = one.muted ? '--muted' : seriesColour(index);
            return {
                label: one.title,
                scale: one.unit,
                colourName: name,
                stroke: () => colour(name),
                width: 1.75,
                dash: one.dashed ? [6, 5] : [],
                fill: group.series.length === 1 && !one.dashed ? () => translucent(name, '22') : undefined,
                points: {size: 5, fill: () => colour(name)},
                value: (chart, value) => inUnit(value, one.unit),
            };
        });
        const title = group.title;
        const card = addCard(title);
        const columns = group.series.map(one => one.values);
        const data = () => readings.thin(seconds, columns, shown.min, shown.max, pixels(innerWidth(card)));
        const update = () => chart.batch(() => {
            chart.setData(data(), false);
            chart.setScale('x', shown);
        });
        const chart = addChart(card, title, {
            scales,
            axes,
            series: [{label: 'Time', value: (self, value) => value == null ? '–' : elapsed(value)}, ...series],
            cursor: {
                // The cursor stands at the same moment in all charts; what is dragged is passed on by show().
                sync: {key: 'time', setSeries: false, filters: {sub: type => type.startsWith('mouse') && type !== 'mousedown' && type !== 'mouseup'}},
                drag: {x: true, y: false, setScale: false},
                bind: {dblclick: () => () => show(whole.min, whole.max)},
                points: {size: 7, width: 0},
            },
            hooks: {
                setSelect: [self => {
                    if (self.select.width > 4) {
                        const at = left => self.posToVal(left, 'x');
                        show(at(self.select.left), at(self.select.left + self.select.width));
                    }
                    self.setSelect({left: 0, width: 0, top: 0, height: 0}, false);
                }],
            },
        }, data(), update);
        chart.update = update;
        timeCharts.push(chart);
    }

    // --- the fan over the temperature ---

    // uPlot wants one ascending row of x values: readings and points of the curve are merged into it.
    function fanData(temperature, speed, curve, width) {
        const points = [];
        const end = readings.countBelow(seconds, shown.max + 1e-6);
        for (let i = readings.countBelow(seconds, shown.min); i < end; ++i) {
            if (!Number.isNaN(temperature.values[i]) && !Number.isNaN(speed.values[i])) {
                points.push([temperature.values[i], speed.values[i]]);
            }
        }
        const rows = [
            ...readings.thinPoints(points, pixels(width), pixels(chartHeight)).map(([x, y]) => [x, y, null]),
            ...curve.map(([x, y]) => [x, null, y]),
        ];
        rows.sort((one, other) => one[0] - other[0]);
        return [0, 1, 2].map(column => rows.map(row => row[column]));
    }

    function fanChart(fan) {
        const hasCurve = fan.curve.length > 0;
        const temperature = allSeries.find(series => series.title === fan.temperature);
        const speed = allSeries.find(series => series.title === fan.speed);
        // The curve is in percent; a board that tells its fan's speed in other units gets a second axis.
        const curveScale = '%';
        const title = 'Fan over temperature';
        const card = addCard(title, hasCurve ? 'readings of the shown period, and the board’s curve'
            : 'readings of the shown period');
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
            axis({label: `${temperature.title}, °C`, size: 28, values: (self, splits) => splits.map(value => number.format(value))}),
            axis({scale: speed.unit, label: `fan speed, ${speed.unit}`, size: 52,
                  values: (self, splits) => splits.map(value => number.format(value))}),
        ];
        if (hasCurve) {
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
        const data = () => fanData(temperature, speed, fan.curve, innerWidth(card)).slice(0, hasCurve ? 3 : 2);
        const update = () => chart.setData(data());
        const chart = addChart(card, title, {
            scales,
            axes,
            series,
            cursor: {
                drag: {x: false, y: false},
                points: {size: 9, width: 0},
                // The nearest reading in either series, not only what shares its temperature.
                dataIdx: (self, index, closest, x) => self.data[index][closest] != null ? closest : nearest(self, index, x),
            },
        }, data(), update);
        onPeriod = update;
        return chart;
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

    for (const group of recording.groups) {
        timeChart(group);
    }
    const fan = recording.fan ? fanChart(recording.fan) : null;
    reset.addEventListener('click', () => show(whole.min, whole.max));
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => {
        for (const chart of [...timeCharts, fan]) {
            chart?.redraw(false);
        }
    });
    // For the console, and for programs that look at the page.
    globalThis.gputunePage = {timeCharts, fan, show, shown: () => shown};
})();
