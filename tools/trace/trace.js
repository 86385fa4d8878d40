// Plays a trace: where the arm is at a moment follows from its motions, all else is drawn from that. Texts reach the page
// only as text nodes, so they may hold any character. Times are microseconds.
(function () {
    'use strict';

    const {data, byId, colourOf, element, table, keepDrawn} = kit;
    const seconds = (time, digits = 3) => (time / 1e6).toFixed(digits) + ' s';
    const plural = (count, one) => `${count} ${one}${count === 1 ? '' : 's'}`;
    const linesShown = 120;
    const pictureTime = 30;  // ms between two pictures of what plays
    const margin = 40;  // mm around what is drawn

    // The last of a sorted list that is not later than a time, -1 for none.
    function lastBefore(list, time, timeOf) {
        let low = -1;
        let high = list.length;
        while (high - low > 1) {
            const middle = (low + high) >> 1;
            if (timeOf(list[middle]) <= time) {
                low = middle;
            } else {
                high = middle;
            }
        }
        return low;
    }

    // --- the arm

    let motions = [];
    let rows = [];
    let dots = [];  // samples: time and place
    const failures = data.lines.filter(line => line.f);
    const duration = Math.max(1, data.end);
    let now = 0;

    // What part of its way a motion has done: ramps of equal length, and a constant speed between them.
    function partDone(motion, time) {
        const length = motion.end - motion.begin;
        const at = Math.min(Math.max(time - motion.begin, 0), length);
        const ramp = motion.ramp;
        if (length <= 0) {
            return 1;
        }
        const speed = 1 / (length - ramp);
        if (at < ramp) {
            return speed * at * at / (2 * ramp);
        }
        return at > length - ramp && ramp > 0 ? 1 - speed * (length - at) ** 2 / (2 * ramp) : speed * (at - ramp / 2);
    }

    function placeAt(time) {
        const index = lastBefore(motions, time, motion => motion.begin);
        if (index < 0) {
            return motions.length ? motions[0].from : null;
        }
        const {from, to} = motions[index];
        if (!from || !to) {
            return time >= motions[index].end ? to || from : from || to;
        }
        const part = partDone(motions[index], time);
        return [from[0] + part * (to[0] - from[0]), from[1] + part * (to[1] - from[1])];
    }

    function choose(table) {
        motions = data.tables.length ? data.tables[table].motions : [];
        rows = motions.filter(motion => motion.kind === 'scan');
        dots = [];
        for (const [begin, end, count] of data.samples) {
            for (let i = 0; i < count; ++i) {
                const time = begin + (i + 0.5) * (end - begin) / count;
                dots.push([time, placeAt(time)]);
            }
        }
        dots.sort((one, other) => one[0] - other[0]);
        for (const row of rows) {
            row.samples = dots.filter(([time]) => time >= row.begin && time <= row.end).length;
        }
        drawTables();
        show(now);
    }

    // --- the bed

    let scale = 1;
    let corner = [0, 0];
    let size = [1, 1];

    function prepare(canvas, height) {
        const ratio = window.devicePixelRatio || 1;
        const width = canvas.clientWidth;
        canvas.width = Math.round(width * ratio);
        canvas.height = Math.round(height * ratio);
        canvas.style.height = height + 'px';
        const context = canvas.getContext('2d');
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.clearRect(0, 0, width, height);
        context.font = '12px system-ui, "DejaVu Sans", sans-serif';
        return context;
    }

    const onBed = ([x, y]) => [(x - corner[0]) * scale, (y - corner[1]) * scale];

    function line(context, from, to) {
        context.beginPath();
        context.moveTo(...onBed(from));
        context.lineTo(...onBed(to));
        context.stroke();
    }

    function drawGrid(context) {
        context.strokeStyle = colourOf('--grid');
        context.fillStyle = colourOf('--quiet');
        context.lineWidth = 1;
        const step = size[0] * scale < 400 ? 200 : 100;
        for (let x = Math.ceil(corner[0] / step) * step; x <= corner[0] + size[0]; x += step) {
            line(context, [x, corner[1]], [x, corner[1] + size[1]]);
            if (onBed([x, 0])[0] < size[0] * scale - 40) {
                context.fillText(`x ${x}`, onBed([x, 0])[0] + 3, 12);
            }
        }
        for (let y = Math.ceil(corner[1] / step) * step; y <= corner[1] + size[1]; y += step) {
            line(context, [corner[0], y], [corner[0] + size[0], y]);
            context.fillText(`y ${y}`, 3, onBed([0, y])[1] - 3);
        }
    }

    function drawMotion(context, motion, time) {
        if (!motion.from || !motion.to || motion.begin > time && motion.kind !== 'scan') {
            return;
        }
        const isScan = motion.kind === 'scan';
        const draw = (to, name, width) => {
            context.strokeStyle = colourOf(name);
            context.lineWidth = width;
            line(context, motion.from, to);
        };
        if (isScan) {
            draw(motion.to, '--line', 5);  // also those to come
        }
        if (motion.begin <= time) {
            const part = partDone(motion, time);
            draw([0, 1].map(i => motion.from[i] + part * (motion.to[i] - motion.from[i])), isScan ? '--bar' : '--quiet',
                isScan ? 5 : 1);
        }
    }

    function drawBed() {
        const places = motions.flatMap(motion => [motion.from, motion.to]).filter(place => place);
        const of = (i, pick, empty) => places.length ? pick(...places.map(place => place[i])) : empty;
        corner = [of(0, Math.min, 0) - margin, of(1, Math.min, 0) - margin];
        size = [of(0, Math.max, 600) + margin - corner[0], of(1, Math.max, 500) + margin - corner[1]];
        const canvas = byId('bed');
        scale = canvas.clientWidth / size[0];
        const height = Math.min(size[1] * scale, 640);
        scale = Math.min(scale, height / size[1]);
        const context = prepare(canvas, height);
        drawGrid(context);
        motions.forEach(motion => drawMotion(context, motion, now));
        context.fillStyle = colourOf('--reference');
        for (let i = lastBefore(dots, now, dot => dot[0]); i >= 0; --i) {
            if (dots[i][1]) {
                context.fillRect(...onBed(dots[i][1]).map(at => at - 1), 2, 2);
            }
        }
        context.strokeStyle = colourOf('--fail');
        context.lineWidth = 2;
        for (const failure of failures) {
            const place = failure.t <= now && placeAt(failure.t);
            if (place) {
                const [x, y] = onBed(place);
                context.strokeRect(x - 5, y - 5, 10, 10);
            }
        }
        const place = placeAt(now);
        if (place) {
            const [x, y] = onBed(place);
            context.strokeStyle = colourOf('--accent');
            context.lineWidth = 3;
            context.beginPath();
            context.arc(x, y, 9, 0, 2 * Math.PI);
            context.stroke();
        }
        const done = rows.filter(row => row.end <= now).length;
        const taken = lastBefore(dots, now, dot => dot[0]) + 1;
        byId('bed-text').textContent = (place ? `The instrument is at x ${place[0].toFixed(1)} mm, y ${place[1].toFixed(1)} mm. `
            : 'Where the instrument is is not known yet. ') +
            `${done} of ${plural(rows.length, 'row')} done, ${plural(taken, 'sample')} taken.`;
    }

    // --- the time line

    function drawStrip() {
        const canvas = byId('strip');
        const context = prepare(canvas, 44);
        const width = canvas.clientWidth;
        const at = time => time / duration * width;
        for (const motion of motions) {
            context.fillStyle = colourOf(motion.kind === 'scan' ? '--bar' : '--line');
            context.fillRect(at(motion.begin), 6, Math.max(1, at(motion.end - motion.begin)), 14);
        }
        context.fillStyle = colourOf('--reference');
        for (const [begin, end] of data.samples) {
            context.fillRect(at(begin), 22, Math.max(1, at(end - begin)), 4);
        }
        context.fillStyle = colourOf('--fail');
        for (const failure of failures) {
            context.fillRect(at(failure.t), 28, 2, 12);
        }
        context.fillStyle = colourOf('--accent');
        context.fillRect(at(now) - 1, 0, 2, 44);
    }

    // --- the dialogue, as much of it as is near

    let firstLine = -1;
    let chosen = -1;  // the line that was asked for; others may be of the same time

    function drawLines() {
        const current = data.lines[chosen]?.t === now ? chosen : lastBefore(data.lines, now, one => one.t);
        const first = Math.max(0, Math.min(current - linesShown / 2, data.lines.length - linesShown));
        const list = byId('lines');
        if (first !== firstLine) {
            firstLine = first;
            list.replaceChildren(...data.lines.slice(first, first + linesShown).map(one => {
                const button = element('button', {type: 'button', '--depth': String(Math.min(one.d, 4))},
                    element('span', {class: 'when'}, (one.t / 1e6).toFixed(3)), one.x);
                button.addEventListener('click', () => seekLine(one));
                return element('li', one.f ? {class: 'failed'} : {}, button);
            }));
        }
        [...list.children].forEach((item, i) => {
            item.classList.toggle('later', first + i > current);
            if (first + i === current) {
                item.setAttribute('aria-current', 'time');
                list.scrollTop = item.offsetTop - list.offsetTop - list.clientHeight / 2;
            } else {
                item.removeAttribute('aria-current');
            }
        });
    }

    // --- the tables below

    function timeButton(time, go) {
        const button = element('button', {type: 'button', class: 'link'}, seconds(time));
        button.addEventListener('click', () => {
            go();
            byId('play-section').scrollIntoView();
        });
        return button;
    }

    const placeText = place => place ? `${place[0].toFixed(1)}, ${place[1].toFixed(1)}` : '–';
    const endText = motion => motion.error ? `error ${motion.error}` : motion.unfinished ? 'no end reported' : 'done';

    function drawTables() {
        byId('rows').replaceChildren(table(`${plural(rows.length, 'row')}; places in mm`, [
            {head: 'row', cell: row => String(rows.indexOf(row) + 1)},
            {head: 'begin', cell: row => timeButton(row.begin, () => seek(row.begin))},
            {head: 'from', cell: row => placeText(row.from)},
            {head: 'to', cell: row => placeText(row.to)},
            {head: 'mm/s', cell: row => String(row.speed)},
            {head: 'duration', cell: row => seconds(row.end - row.begin)},
            {head: 'samples', cell: row => String(row.samples)},
            {head: 'end', text: true, cell: endText}], rows));
        byId('rows-section').classList.toggle('hidden', rows.length === 0);
        byId('failures').replaceChildren(table(`${plural(failures.length, 'failure')}; ${data.failuresRemark}`, [
            {head: 'time', cell: failure => timeButton(failure.t, () => seekLine(failure))},
            {head: 'what was said', text: true, cell: failure => failure.x}], failures.slice(0, 500)));
        byId('failures-section').classList.toggle('hidden', failures.length === 0);
    }

    // --- time

    let playing = null;  // time of the last picture, while it plays

    function show(time) {
        now = Math.min(Math.max(time, 0), duration);
        byId('slider').value = now;
        byId('slider').setAttribute('aria-valuetext', seconds(now));
        byId('time').textContent = `${seconds(now)} of ${seconds(data.end)}`;
        drawBed();
        drawStrip();
        drawLines();
    }

    function pause() {
        playing = null;
        byId('play').textContent = 'Play';
    }

    function seek(time) {
        pause();
        show(time);
    }

    function seekLine(one) {
        chosen = data.lines.indexOf(one);
        seek(one.t);
    }

    function step() {
        if (playing === null) {
            return;
        }
        const moment = performance.now();
        const passed = (moment - playing) * 1000 * Number(byId('speed').value);
        playing = moment;
        show(now + passed);
        if (now >= duration) {
            pause();
        } else {
            setTimeout(step, pictureTime);
        }
    }

    byId('play').addEventListener('click', () => {
        if (playing !== null) {
            pause();
            return;
        }
        show(now >= duration ? 0 : now);
        playing = performance.now();
        byId('play').textContent = 'Pause';
        setTimeout(step, pictureTime);
    });
    byId('slider').max = duration;
    byId('slider').addEventListener('input', () => seek(Number(byId('slider').value)));
    byId('strip').addEventListener('pointerdown', event =>
        seek((event.clientX - byId('strip').getBoundingClientRect().left) / byId('strip').clientWidth * duration));
    const other = failure => failure && seekLine(failure);
    byId('next').addEventListener('click', () => other(failures.find(failure => failure.t > now)));
    byId('previous').addEventListener('click', () => other(failures.filter(failure => failure.t < now).pop()));
    for (const id of ['next', 'previous']) {
        byId(id).disabled = failures.length === 0;
    }

    // So fast that the whole takes half a minute or less.
    const speeds = [0.1, 0.5, 1, 2, 5, 10, 50, 200];
    const usual = speeds.find(speed => data.end / 1e6 / speed <= 30) || 200;
    byId('speed').append(...speeds.map(speed =>
        element('option', {value: speed, ...(speed === Math.max(1, usual) ? {selected: ''} : {})}, `${speed} ×`)));
    byId('table').append(...data.tables.map((one, i) => element('option', {value: i}, one.name)));
    byId('table').addEventListener('change', () => choose(Number(byId('table').value)));
    byId('table-label').classList.toggle('hidden', data.tables.length < 2);

    const motionCount = data.tables.reduce((sum, one) => sum + one.motions.length, 0);
    byId('subject').textContent = `${data.file}: ${seconds(data.end)}, ${plural(motionCount, 'motion')}, ` +
        `${plural(data.samples.reduce((sum, run) => sum + run[2], 0), 'sample')}, ${plural(failures.length, 'failure')}` +
        (data.cut && `. The file ends within ${data.cut}.`);
    byId('program').textContent = `Made by ${data.program}`;
    choose(0);
    keepDrawn(() => show(now));
})();
