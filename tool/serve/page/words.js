// What the live page says in words.
'use strict';

const words = (() => {
    const absent = 'not available';

    const clock = new Intl.DateTimeFormat('en-GB', {hour: '2-digit', minute: '2-digit', second: '2-digit'});
    const time = seconds => clock.format(new Date(seconds * 1000));

    // Of a board that is known.
    function facts() {
        const {board, start_time_seconds: start, worker_restarts: restarts} = live.now;
        return [
            board.interface, `adapter ${board.adapter ?? absent}`,
            `read every ${charts.inUnit(live.known.interval_seconds, 's')} since ${time(start)}`,
            restarts > 0 ? `driver lost ${restarts === 1 ? 'once' : `${restarts} times`} since then` : '',
        ].filter(Boolean).join(' · ');
    }

    // A name for the style, and what stands at the top. `goneSince`: the moment, in seconds, when the connection was
    // lost; null with a connection.
    function state(goneSince) {
        return goneSince != null ? ['gone', 'No connection']
            : !live.now ? ['connecting', 'Connecting']
            : live.now.powered === false ? ['waiting', 'No power']
            : !live.now.up ? ['waiting', 'No readings']
            : ['live', `Live, ${time(live.now.last_sample_time_seconds)}`];
    }

    function sensorProblem(sensor) {
        const reading = live.sensorNow(sensor);
        if (reading.unsure) {
            return `${sensor.title}: ${charts.inUnit(reading.value, live.known.units[reading.unit])} is ${live.known.doubts[reading.unsure]}.`;
        }
        if (reading.value != null || !live.wasRead(sensor)) {
            return null;
        }
        const last = sensor.values.findLastIndex(value => value != null);
        return `${sensor.title} is ${absent}: it was last read at ${time(live.times[last])}.`;
    }

    // Sentences.
    function problems(goneSince) {
        if (goneSince != null) {
            return [`No connection to gputunectl since ${time(goneSince)}. The page tries again.`];
        }
        if (!live.now) {
            return [];
        }
        const last = live.now.last_sample_time_seconds;
        const since = last == null ? '' : ` The last reading was at ${time(last)}.`;
        if (!live.now.up) {
            return [(live.now.problem?.message ?? 'There is no reading yet.') + since];
        }
        const found = live.known.sensors.map(sensorProblem).filter(Boolean);
        if (found.length > 0 && live.failing.length > 0) {
            found.push(`These calls of the driver failed: ${live.failing.map(one => `${one.call} (${one.code})`).join(', ')}.`);
        }
        return found;
    }

    return {absent, time, facts, state, problems};
})();
