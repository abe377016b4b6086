// The live page: asks for the last hour once, then takes an event for each sample.
'use strict';

(() => {
    const {absent, time} = words;
    const hasCharts = typeof uPlot !== 'undefined';
    const part = id => document.getElementById(id);
    const add = (parent, name, text, className) => {
        const element = document.createElement(name);
        element.textContent = text ?? '';
        element.className = className ?? '';
        parent.append(element);
        return element;
    };

    // Only what is new is put into the document, so that a screen reader says it once.
    function showProblems() {
        const wanted = words.problems(goneSince);
        const list = part('problems');
        for (const note of [...list.children]) {
            if (!wanted.includes(note.textContent)) {
                note.remove();
            }
        }
        const there = [...list.children].map(note => note.textContent);
        for (const text of wanted.filter(one => !there.includes(one))) {
            add(list, 'p', text, 'note');
        }
        return wanted.length > 0;
    }

    function showHeader(isTroubled) {
        if (live.now?.board) {
            part('name').textContent = live.now.board.name ?? 'Graphics board';
            part('facts').textContent = words.facts();
        }
        const [state, text] = words.state(goneSince);
        part('connection').dataset.state = state;
        part('connection-text').textContent = text;
        document.title = `${isTroubled ? '⚠ ' : ''}${part('name').textContent} – gputunectl`;
    }

    // --- values and curves ---

    let cards = [];
    let cardsKey = '';
    let fanCard = null;
    let period = 3600;
    const height = 200;

    // Up to the newest point; of a page that was just opened, from the oldest on, at least a minute.
    function shownPeriod() {
        const end = live.times[live.times.length - 1] ?? Date.now() / 1000;
        const start = Math.max(end - period, live.times[0] ?? end);
        return [start, Math.max(end, start + 60)];
    }

    const timeAxis = () => charts.axis({
        size: 28,
        incrs: [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600],
        space: 55,
        values: (chart, splits, index, space, increment) =>
            splits.map(seconds => time(seconds).slice(0, increment < 60 ? 8 : 5)),
    });

    const inHistory = members => [live.times, ...members.map(sensor => sensor.values)];

    function addTimeChart(card, members) {
        const {scales, axes, series} = charts.overTime(members.map(sensor => (
            {title: sensor.title, unit: live.known.units[sensor.unit], dashed: sensor.limit})));
        return charts.add(card, '', {
            scales: {x: {time: false, range: shownPeriod}, ...scales},
            axes: [timeAxis(), ...axes],
            series: [{label: 'Time', value: (chart, value) => value == null ? '–' : time(value)}, ...series],
            cursor: {sync: {key: 'time', setSeries: false}, drag: {x: false, y: false}, points: {size: 7, width: 0}},
            // The values at the cursor stand below those of now.
            legend: {show: false},
            hooks: {setCursor: [() => cards.filter(one => one.card === card).forEach(showRanges)]},
            height,
        }, inHistory(members));
    }

    // A limit alone is no curve.
    const hasCurves = members => hasCharts && members.some(sensor => live.wasRead(sensor) && !sensor.limit);

    // The quantity's sensors with their values, and their curves.
    function addCard(quantity, members) {
        const card = charts.addCard(part('grid'), quantity);
        const list = add(card, 'dl', '', 'values');
        const rows = members.map((sensor, index) => {
            const row = add(list, 'div');
            const name = add(row, 'dt', sensor.title);
            const swatch = document.createElement('i');
            swatch.className = sensor.limit ? 'swatch dashed' : 'swatch';
            swatch.style.color = `var(${charts.seriesColour(index)})`;
            name.prepend(swatch);
            return {sensor, value: add(row, 'dd'), range: add(row, 'dd', '', 'range')};
        });
        const chart = hasCurves(members) ? addTimeChart(card, members) : null;
        return {card, quantity, members, rows, chart};
    }

    // What was read in the shown period, or at the cursor.
    function showRanges({rows, chart}) {
        const at = chart?.cursor.idx;
        for (const {sensor, range, extremes} of rows) {
            const value = sensor.values[at];
            range.textContent = at != null ? `${value == null ? absent : charts.text(value)} at ${time(live.times[at])}`
                : !extremes || sensor.limit ? ''
                : extremes[0] === extremes[1] ? 'steady' : extremes.join(' to ');
        }
    }

    function showCard(card) {
        const [start, end] = shownPeriod();
        const described = [];
        for (const row of card.rows) {
            const {sensor, value} = row;
            const reading = live.sensorNow(sensor);
            const isAvailable = reading.value != null && !reading.unsure;
            value.textContent = isAvailable ? charts.inUnit(reading.value, live.known.units[reading.unit])
                : reading.unsure ? 'unsure' : absent;
            value.classList.toggle('absent', !isAvailable);
            const shown = sensor.values.filter((one, index) => one != null && live.times[index] >= start && live.times[index] <= end);
            row.extremes = shown.length > 0 ? [Math.min(...shown), Math.max(...shown)].map(charts.text) : null;
            described.push(`${sensor.title} ${row.extremes ? `${row.extremes.join(' to ')} ${live.known.units[sensor.unit]}` : absent}`);
        }
        showRanges(card);
        card.chart?.setData(inHistory(card.members));
        card.chart?.ctx.canvas.setAttribute('aria-label', `${card.quantity} over the time: ${described.join(', ')}`);
    }

    function fanParts() {
        const find = code => live.known.sensors.find(sensor => sensor.sensor === code && live.wasRead(sensor));
        const temperature = find('gpu_temperature');
        const speed = find('fan_duty') ?? find('fan_speed');
        return hasCharts && temperature && speed ? {temperature, speed} : null;
    }

    const fanCurve = () => live.now?.settings?.fan_curve ?? [];

    function fanData({temperature, speed}) {
        const start = shownPeriod()[0];
        const points = [];
        live.times.forEach((seconds, index) => {
            if (seconds >= start && temperature.values[index] != null && speed.values[index] != null) {
                points.push([temperature.values[index], speed.values[index]]);
            }
        });
        return charts.fanData(points, fanCurve().map(point => [point.temperature_celsius, point.speed_percent]));
    }

    function addFanCard(fan) {
        const title = 'Fan over temperature';
        const card = charts.addCard(part('grid'), title, fanCurve().length > 0 ? 'readings, and the board’s curve' : '');
        const {temperature, speed} = fan;
        const described = ({title, unit}) => ({title, unit: live.known.units[unit]});
        const chart = charts.addFan(card, `${title}: ${speed.title} over ${temperature.title}`, described(temperature),
            described(speed), fanData(fan));
        return {fan, chart};
    }

    // All cards anew, when other sensors have come or gone.
    function arrange(groups) {
        for (const card of [...cards, fanCard]) {
            card?.chart?.destroy();
        }
        part('grid').replaceChildren();
        const addCards = hasThem => groups.filter(([, members]) => hasCurves(members) === hasThem).map(group => addCard(...group));
        cards = addCards(true);
        const fan = fanParts();
        fanCard = fan && addFanCard(fan);
        cards.push(...addCards(false));
        part('period').hidden = !hasCharts || groups.length === 0;
        const missing = live.known.sensors.filter(sensor => !groups.some(([, members]) => members.includes(sensor)));
        part('absent').hidden = missing.length === 0;
        part('absent-count').textContent = `${missing.length} of ${live.known.sensors.length} sensors are ${absent} on this board`;
        part('absent-sensors').replaceChildren();
        for (const sensor of missing) {
            add(part('absent-sensors'), 'li', sensor.title);
        }
    }

    function show() {
        const shown = live.known.sensors.filter(sensor => live.wasRead(sensor) || live.sensorNow(sensor).value != null);
        const groups = [...new Set(shown.map(sensor => sensor.quantity))].map(quantity =>
            [quantity, shown.filter(sensor => sensor.quantity === quantity)]);
        const key = [...shown.map(sensor => sensor.sensor + live.wasRead(sensor)), fanCurve().length > 0].join();
        // History and readings are taken together: sensors of another history are other objects.
        if (key !== cardsKey || cards.some(card => !card.members.every(sensor => live.known.sensors.includes(sensor)))) {
            cardsKey = key;
            arrange(groups);
        }
        cards.forEach(showCard);
        fanCard?.chart.setData(fanData(fanCard.fan));
        showHeader(showProblems());
    }

    // --- the connection ---

    let goneSince = null;  // the moment, in seconds, when the connection was lost
    let stream = null;
    let retry = null;
    let pause = 1;
    let lastEvent = 0;

    async function ask(path) {
        const answer = await fetch(path, {cache: 'no-store', signal: AbortSignal.timeout(10000)});
        if (!answer.ok) {
            throw new Error(`${path}: ${answer.status}`);
        }
        return answer.json();
    }

    function disconnect() {
        clearTimeout(retry);
        stream?.close();
        stream = null;
    }

    function lose() {
        disconnect();
        live.forgetNow();
        goneSince ??= Date.now() / 1000;
        retry = setTimeout(connect, pause * 1000);
        pause = Math.min(pause * 2, 5);
        show();
    }

    function take(readings) {
        lastEvent = Date.now();
        goneSince = null;
        pause = 1;
        live.takeReadings(readings);
        show();
    }

    async function connect() {
        disconnect();
        lastEvent = Date.now();
        const own = new EventSource('/api/events');
        stream = own;
        try {
            await new Promise((resolve, reject) => Object.assign(own, {onopen: resolve, onerror: reject}));
            own.onerror = lose;
            const [history, readings] = await Promise.all([ask('/api/history'), ask('/api/readings')]);
            if (own !== stream) {
                return;
            }
            live.takeHistory(history);
            take(readings);
            own.onmessage = event => take(JSON.parse(event.data));
        } catch {
            if (own === stream) {
                lose();
            }
        }
    }

    // A connection may end without a word, for example while the machine sleeps.
    setInterval(() => {
        if (!stream || Date.now() - lastEvent < (3 * live.known.interval_seconds + 10) * 1000) {
            return;
        }
        if (!live.now) {
            lose();
            return;
        }
        if (live.now.up) {
            live.forgetNow();
            show();
        }
        connect();
    }, 1000);
    // Nobody looks: the exporter need not send anything.
    document.addEventListener('visibilitychange', () => {
        disconnect();
        live.forgetNow();
        goneSince = null;
        show();
        if (!document.hidden) {
            connect();
        }
    });
    part('period').addEventListener('change', event => {
        period = Number(event.target.value);
        show();
    });
    charts.onScheme(() => {
        for (const card of [...cards, fanCard]) {
            card?.chart?.redraw(false);
        }
    });
    connect();
    // For the console, and for programs that look at the page.
    globalThis.gputunePage = {charts: () => cards, fan: () => fanCard?.chart, times: () => live.times};
})();
