// What the live page knows: the readings of the last hour, and those of now.
'use strict';

const live = (() => {
    // Of /api/history. Its sensors have a value, or null, for each of the times.
    let known = {interval_seconds: 1, spacing_seconds: 0, units: {}, doubts: {}, sensors: []};
    let times = [];
    let now = null;        // what /api/readings says; null without a connection
    let failing = [];      // the calls that failed since the event before

    const sensorNow = sensor => now?.sensors?.[sensor.sensor] ?? {value: null};
    const wasRead = sensor => sensor.values.some(value => value != null);
    const isGap = index => known.sensors.every(sensor => sensor.values[index] == null);
    const endsInGap = () => times.length > 0 && isGap(times.length - 1);

    function addPoint(seconds, valueOf) {
        times.push(seconds);
        for (const sensor of known.sensors) {
            sensor.values.push(valueOf(sensor));
        }
    }

    function removePoints(start, count) {
        times.splice(start, count);
        for (const sensor of known.sensors) {
            sensor.values.splice(start, count);
        }
    }

    // An exporter that was started anew does not know what was before: the page's own points stay.
    function takeHistory(history) {
        const before = Object.fromEntries(known.sensors.map(sensor => [sensor.sensor, sensor.values]));
        const first = history.times_seconds[0] ?? Infinity;
        const older = times.filter(seconds => seconds < first);
        const hasGap = older.length === 0 || isGap(older.length - 1);
        const gap = hasGap ? [] : [Math.min(older[older.length - 1] + 0.001, first)];
        times = [...older, ...gap, ...history.times_seconds];
        for (const sensor of history.sensors) {
            const values = before[sensor.sensor]?.slice(0, older.length) ?? older.map(() => null);
            sensor.values = [...values, ...gap.map(() => null), ...sensor.values ?? history.times_seconds.map(() => null)];
        }
        known = history;
    }

    // What a curve has of a reading: neither a counter nor what is unsure.
    function curveValue(sensor) {
        const reading = sensorNow(sensor);
        return reading.unit === 'raw' || reading.unsure ? null : reading.value;
    }

    function takeReadings(readings) {
        const counts = Object.fromEntries((now ?? readings).read_failures.map(one => [one.call + one.code, one.count]));
        failing = readings.read_failures.filter(one => one.count > (counts[one.call + one.code] ?? 0));
        now = readings;
        const seconds = readings.up ? readings.last_sample_time_seconds : readings.time_seconds;
        const isKnown = readings.up && times[times.length - 1] === seconds;
        // The exporter's clock was set back.
        while (!isKnown && times[times.length - 1] >= seconds) {
            removePoints(times.length - 1, 1);
        }
        const pause = seconds - times[times.length - 1];
        if (pause > Math.max(3 * known.interval_seconds, 5) && !endsInGap()) {
            addPoint(seconds - pause / 2, () => null);
        }
        if (readings.up ? !isKnown && !(pause < known.spacing_seconds && !endsInGap()) : !endsInGap()) {
            addPoint(seconds, curveValue);
        }
        removePoints(0, times.filter(one => one < seconds - 3600).length);
    }

    return {
        get known() { return known; },
        get times() { return times; },
        get now() { return now; },
        get failing() { return failing; },
        sensorNow, wasRead, takeHistory, takeReadings,
        // Without a connection nothing is known of now.
        forgetNow() { now = null; },
    };
})();
