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

    const description = title => `${title}; its figures are in the summary`;

    // A chart is given as much data as it has pixels for.
    const pixels = length => Math.max(Math.ceil(length * devicePixelRatio), 1);

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
        const {scales, axes, series} = charts.overTime(group.series);
        const timeAxis = charts.axis({
            label: 'time since the start',
            size: 28,
            incrs: [0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 28800, 86400],
            values: (chart, splits) => splits.map(elapsed),
        });
        const card = charts.addCard(grid, group.title);
        const columns = group.series.map(one => one.values);
        const data = () => readings.thin(seconds, columns, shown.min, shown.max, pixels(charts.innerWidth(card)));
        const update = () => chart.batch(() => {
            chart.setData(data(), false);
            chart.setScale('x', shown);
        });
        const chart = charts.add(card, description(group.title), {
            scales: {x: {time: false, range: () => [shown.min, shown.max]}, ...scales},
            axes: [timeAxis, ...axes],
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

    function fanChart(fan) {
        const temperature = allSeries.find(series => series.title === fan.temperature);
        const speed = allSeries.find(series => series.title === fan.speed);
        const title = 'Fan over temperature';
        const card = charts.addCard(grid, title, fan.curve.length > 0 ? 'readings of the shown period, and the board’s curve'
            : 'readings of the shown period');
        const data = () => {
            const points = [];
            const end = readings.countBelow(seconds, shown.max + 1e-6);
            for (let i = readings.countBelow(seconds, shown.min); i < end; ++i) {
                if (!Number.isNaN(temperature.values[i]) && !Number.isNaN(speed.values[i])) {
                    points.push([temperature.values[i], speed.values[i]]);
                }
            }
            return charts.fanData(readings.thinPoints(points, pixels(charts.innerWidth(card)), pixels(charts.height)), fan.curve);
        };
        const update = () => chart.setData(data());
        const chart = charts.addFan(card, description(title), temperature, speed, data(), update);
        onPeriod = update;
        return chart;
    }

    for (const group of recording.groups) {
        timeChart(group);
    }
    const fan = recording.fan ? fanChart(recording.fan) : null;
    reset.addEventListener('click', () => show(whole.min, whole.max));
    charts.onScheme(() => {
        for (const chart of [...timeCharts, fan]) {
            chart?.redraw(false);
        }
    });
    // For the console, and for programs that look at the page.
    globalThis.gputunePage = {timeCharts, fan, show, shown: () => shown};
})();
