// Draws the report from the data in the page. Texts reach the page only as text nodes and attributes, so names
// may hold any character.
(function () {
    'use strict';

    const {data, byId, figure, colourOf, element, table, swatch, plots, plot, keepDrawn} = kit;
    const bands = Array.from({length: 36}, (_, i) => 380 + 10 * i);
    const patchesOnPage = 250;
    // Differences that are all tiny are told apart by more decimals.
    const largest = Math.max(0, ...data.formulas.map(formula => formula.maximum));
    const differenceText = value => figure(value, largest >= 0.1 ? 2 : 4);

    // --- one patch

    let selected = -1;
    let shown = -1;

    function showPatch(index) {
        if (index < 0 || index === shown) {
            return;
        }
        shown = index;
        drawPatch();
    }

    function readingText({way, samples, spread, residual}) {
        return `Read ${way}` + (samples > 0 ? `, ${samples} samples within ${figure(spread)} (CIE 1976)` : '') +
            (residual > 0 ? `, edges of the row within ${figure(residual)} mm` : '') + '.';
    }

    const partHeads = ['dL*', 'dC*ab', 'dH*ab'];
    const partColumns = partHeads.map((head, i) => ({head, cell: ({patch}) => figure(patch.parts?.[i])}));

    function drawPatch() {
        const patch = data.patches[shown];
        const sides = [['Measured', patch.measured], ['Reference', patch.reference]].filter(([, side]) => side);
        byId('patch-name').textContent = 'Patch ' + patch.name;
        byId('patch-figures').replaceChildren(
            table('', [
                {head: '', text: true, cell: ([name, side]) => element('span', {}, swatch(side), name)},
                ...['L*', 'a*', 'b*'].map((head, i) => ({head, cell: ([, side]) => figure(side.lab[i])})),
            ], sides));
        byId('patch-notes').replaceChildren(
            element('p', {}, patch.differences
                ? [...data.formulas.map(({name}, i) => `${name} ${differenceText(patch.differences[i])}`),
                    ...partHeads.map((name, i) => `${name} ${figure(patch.parts[i])}`)].join(', ')
                : data.reference ? 'No difference: the reference does not have this patch.' : ''));
        if (patch.reading) {
            byId('patch-notes').append(element('p', {class: 'note'}, readingText(patch.reading)));
        }
        if (patch.densities) {
            byId('patch-notes').append(element('p', {class: 'note'}, 'Densities of the instrument: ' +
                ['red', 'green', 'blue', 'visual'].map((name, i) => `${name} ${figure(patch.densities[i])}`).join(', ')));
        }
        if (patch.repeatSpread != null) {
            byId('patch-notes').append(element('p', {class: 'note'},
                `Average of several scans, ${figure(patch.repeatSpread, 3)} from their mean (CIEDE2000).`));
        }
        if (sides.some(([, side]) => !side.inGamut)) {
            byId('patch-notes').append(element('p', {class: 'note'},
                'This colour lies outside what an sRGB screen can show.'));
        }
        const spectra = sides.filter(([, side]) => side.spectrum);
        byId('spectrum-table').parentElement.classList.toggle('hidden', spectra.length === 0);
        if (spectra.length === 0) {
            plots.get('spectrum')?.made.destroy();
            plots.delete('spectrum');
            return;
        }
        const highest = Math.max(1, ...spectra.flatMap(([, side]) => side.spectrum));
        const look = {
            Measured: {stroke: colourOf('--measured'), width: 2, points: {show: false}},
            Reference: {stroke: colourOf('--reference'), width: 2, dash: [6, 4], points: {show: false}},
        };
        plot('spectrum', 260, {
            description: `Reflectance of patch ${patch.name} over the wavelength`,
            scales: {x: {time: false}, y: {range: [0, highest]}},
            axes: [{label: 'Wavelength, nm'}, {label: 'Reflectance'}],
            series: [{label: 'nm'}, ...spectra.map(([name]) => ({label: name, ...look[name],
                value: (_, value) => figure(value, 4)}))],
        }, [bands, ...spectra.map(([, side]) => side.spectrum)]);
        byId('spectrum-table').replaceChildren(table('Reflectance factors', [
            {head: 'nm', cell: band => String(bands[band])},
            ...spectra.map(([head, side]) => ({head, cell: band => figure(side.spectrum[band], 4)})),
        ], bands.map((_, band) => band)));
    }

    // --- the chart

    // Marks of the differences above the first limit, from pale to dark, told apart without colour vision too; the last
    // class has no upper limit.
    const classes = ['#fed976', '#fd8d3c', '#d7191c', '#6a0026'];
    const limitSets = [[0.1, 0.2, 0.5, 1], [1, 2, 3, 5]];
    let formulaIndex = 0;
    let overlaid = true;
    const options = [];

    function limits() {
        return limitSets[data.formulas[formulaIndex].percentile95 <= 0.5 ? 0 : 1];
    }

    const classOf = difference => classes[Math.min(classes.length - 1,
        limits().slice(1).filter(limit => difference > limit).length)];

    // Diameter of a mark as a part of the patch: in proportion to the difference, as far as it can be seen and something
    // of the patch too.
    const markSize = difference => Math.max(0.16, 0.58 * Math.min(1, difference / (1.2 * limits().at(-1))));

    function select(index, focus) {
        if (selected >= 0) {
            options[selected].setAttribute('aria-selected', 'false');
            options[selected].tabIndex = -1;
        }
        selected = index;
        options[index].setAttribute('aria-selected', 'true');
        options[index].tabIndex = 0;
        if (focus) {
            options[index].focus();
        }
        showPatch(index);
    }

    // The nearest patch to one side: forward is +1 or -1 along axis 0 (x) or 1 (y).
    function neighbour(index, axis, forward) {
        const from = data.patches[index].place;
        let best = index;
        let least = Infinity;
        data.patches.forEach((patch, i) => {
            const ahead = (patch.place[axis] - from[axis]) * forward;
            const aside = Math.abs(patch.place[1 - axis] - from[1 - axis]);
            if (ahead > from[2 + axis] / 4 && aside < ahead + from[3 - axis] / 2 && ahead + 3 * aside < least) {
                least = ahead + 3 * aside;
                best = i;
            }
        });
        return best;
    }

    function onKey(event) {
        const moves = {ArrowRight: [0, 1], ArrowLeft: [0, -1], ArrowDown: [1, 1], ArrowUp: [1, -1]};
        let next = -1;
        if (moves[event.key]) {
            next = neighbour(selected, ...moves[event.key]);
        } else if (event.key === 'Home') {
            next = 0;
        } else if (event.key === 'End') {
            next = options.length - 1;
        }
        if (next >= 0) {
            event.preventDefault();
            select(next, true);
        }
    }

    function buildChart() {
        const chart = byId('chart');
        const edges = data.patches.reduce((box, {place: [x, y, w, h]}) => [Math.min(box[0], x - w / 2),
            Math.min(box[1], y - h / 2), Math.max(box[2], x + w / 2), Math.max(box[3], y + h / 2)],
            [Infinity, Infinity, -Infinity, -Infinity]);
        const smallest = Math.min(...data.patches.slice(0, 1).map(({place}) => Math.min(place[2], place[3])));
        const margin = smallest * 0.4;
        const width = edges[2] - edges[0] + 2 * margin;
        const height = edges[3] - edges[1] + 2 * margin;
        chart.style.aspectRatio = `${width} / ${height}`;
        chart.style.maxWidth = `calc(80vh * ${width / height})`;
        const percent = value => value * 100 + '%';
        data.patches.forEach((patch, index) => {
            const [x, y, w, h] = patch.place;
            const option = element('div', {role: 'option', tabindex: '-1', 'aria-selected': 'false'});
            option.style.left = percent((x - w / 2 - edges[0] + margin) / width);
            option.style.top = percent((y - h / 2 - edges[1] + margin) / height);
            option.style.width = percent(w / width);
            option.style.height = percent(h / height);
            option.title = patch.name;
            option.dataset.index = index;
            option.style.setProperty('--m', patch.measured.colour);
            if (patch.reference) {
                option.classList.add('paired');
                option.style.setProperty('--r', patch.reference.colour);
            }
            options.push(option);
        });
        chart.append(...options);
        const indexOf = event => {
            const option = event.target.closest('[role=option]');
            return option ? Number(option.dataset.index) : -1;
        };
        chart.addEventListener('pointerover', event => showPatch(indexOf(event)));
        chart.addEventListener('pointerleave', () => showPatch(selected));
        chart.addEventListener('click', event => indexOf(event) >= 0 && select(indexOf(event), true));
        chart.addEventListener('keydown', onKey);
        byId('chart-help').textContent = (data.placed
            ? 'Patches lie as in the layout, x to the right and y downwards. '
            : 'The files do not tell where the patches lie; they are shown in the order of the file. ') +
            (data.formulas.length > 0
                ? 'Without differences the lower right half of a patch is its reference. ' : '') +
            'Point at a patch, or walk with the arrow keys, to see its spectrum.';
        const resize = () => {
            const pixels = chart.clientWidth * smallest / width;
            chart.classList.toggle('figures', pixels >= 34);
            chart.classList.toggle('tiny', pixels < 12);
            chart.style.setProperty('--figure', Math.max(9, Math.min(15, pixels * 0.26)) + 'px');
        };
        new ResizeObserver(resize).observe(chart);
        resize();
    }

    function drawOverlay() {
        byId('chart').classList.toggle('overlaid', overlaid);
        byId('chart').classList.toggle('plain', !overlaid);
        byId('scale').classList.toggle('hidden', !overlaid);
        data.patches.forEach((patch, index) => {
            const difference = patch.differences?.[formulaIndex];
            const label = difference == null ? patch.name
                : `${patch.name}, ${data.formulas[formulaIndex].name} ${differenceText(difference)}`;
            options[index].setAttribute('aria-label', label);
            options[index].title = label;
            const option = options[index];
            const isMarked = difference != null && difference > limits()[0];
            option.classList.toggle('marked', isMarked);
            if (isMarked) {
                const [, , width, height] = patch.place;
                option.style.setProperty('--d', classOf(difference));
                option.style.setProperty('--mark-size',
                    `${100 * markSize(difference) * Math.min(1, height / width)}%`);
                option.style.setProperty('--on-m', patch.measured.lab[0] > 55 ? '#000' : '#fff');
                option.dataset.figure = figure(difference, difference < 10 ? 2 : 1);
            }
        });
        if (data.formulas.length === 0) {
            return;
        }
        const list = limits();
        const mark = (limit, fill) => element('span', {class: 'mark', background: fill,
            '--size': `${Math.round(30 * markSize(limit))}px`});
        byId('scale').replaceChildren(element('span', {}, `up to ${list[0]}: no mark`),
            ...classes.map((fill, i) => element('span', {}, mark(list[i + 1] ?? 2 * list[i], fill),
                i + 1 < list.length ? `up to ${list[i + 1]}` : `above ${list[i]}`)));
    }

    function buildOverlayChoice() {
        const choices = [...data.formulas.map((formula, i) => [formula.name, () => {
            formulaIndex = i;
            overlaid = true;
        }]), ['Off', () => { overlaid = false; }]];
        choices.forEach(([name, choose], i) => {
            const radio = element('input', {type: 'radio', name: 'overlay', ...(i === 0 ? {checked: ''} : {})});
            radio.addEventListener('change', () => {
                choose();
                drawOverlay();
                drawDifferences();
            });
            byId('overlay').append(element('label', {}, radio, ' ' + name));
        });
    }

    // --- tables of patches

    const labColumns = (title, side) => ['L*', 'a*', 'b*'].map((head, i) => ({head: `${title} ${head}`,
        cell: ({patch}) => figure(patch[side]?.lab[i])}));

    function link(index) {
        const button = element('button', {type: 'button', class: 'link'}, data.patches[index].name);
        button.addEventListener('click', () => select(index, true));
        return button;
    }

    function patchColumns() {
        const named = ({patch, index}) =>
            element('span', {}, swatch(patch.measured), swatch(patch.reference), link(index));
        const hasReference = data.formulas.length > 0;
        return [
            {head: 'Patch', text: true, cell: named},
            ...data.formulas.map((formula, i) => ({head: formula.name,
                cell: ({patch}) => differenceText(patch.differences?.[i])})),
            ...(hasReference ? partColumns : []),
            ...labColumns('Measured', 'measured'),
            ...(hasReference ? labColumns('Reference', 'reference') : []),
        ];
    }

    function allColumns() {
        const reading = ({patch}, text) => patch.reading ? text(patch.reading) : '–';
        return [...patchColumns(), ...(data.patches.some(patch => patch.reading) ? [
            {head: 'Read', text: true, cell: row => reading(row, ({way}) => way)},
            {head: 'Samples', cell: row => reading(row, ({samples}) => samples > 0 ? String(samples) : '–')},
            {head: 'Spread', cell: row => reading(row, ({samples, spread}) => samples > 0 ? figure(spread) : '–')},
            {head: 'Edges, mm', cell: row => reading(row, ({residual}) => residual > 0 ? figure(residual) : '–')},
        ] : [])];
    }

    const rowsOf = indices => indices.map(index => ({patch: data.patches[index], index}));

    let page = 0;
    function drawPage() {
        const count = data.patches.length;
        const from = page * patchesOnPage;
        const to = Math.min(count, from + patchesOnPage);
        byId('page-range').textContent = `${from + 1} to ${to} of ${count}`;
        byId('previous-page').disabled = page === 0;
        byId('next-page').disabled = to === count;
        byId('all-table').replaceChildren(table('All patches in the order of the file', allColumns(),
            rowsOf(Array.from({length: to - from}, (_, i) => from + i))));
    }

    function turnPage(by) {
        page += by;
        drawPage();
    }

    // --- differences

    // Upright lines at the given values, each with its text, staggered so that the texts do not cover one another.
    function marks(list) {
        return {hooks: {draw: [drawn => {
            const {ctx, bbox} = drawn;
            const ratio = uPlot.pxRatio;
            ctx.save();
            ctx.strokeStyle = colourOf('--mark');
            ctx.lineWidth = 1.5 * ratio;
            ctx.font = `${12 * ratio}px system-ui, "DejaVu Sans", sans-serif`;
            ctx.textBaseline = 'top';
            ctx.textAlign = 'left';
            const places = list.map(({value}) => Math.round(drawn.valToPos(value, 'x', true)));
            const topOf = i => bbox.top + (2 + 17 * i) * ratio;
            list.forEach(({dash}, i) => {
                ctx.setLineDash(dash.map(part => part * ratio));
                ctx.beginPath();
                ctx.moveTo(places[i], topOf(i));
                ctx.lineTo(places[i], bbox.top + bbox.height);
                ctx.stroke();
            });
            // A text may lie over another mark's line, which then stops short of it.
            list.forEach(({text}, i) => {
                const width = ctx.measureText(text).width + 8 * ratio;
                const toTheRight = places[i] + width < bbox.left + bbox.width;
                const left = toTheRight ? places[i] + 2 * ratio : places[i] - width - 2 * ratio;
                ctx.fillStyle = colourOf('--page');
                ctx.fillRect(left, topOf(i) - ratio, width, 15 * ratio);
                ctx.fillStyle = colourOf('--mark');
                ctx.fillText(text, left + 4 * ratio, topOf(i));
            });
            ctx.restore();
        }]}};
    }

    function drawDifferences() {
        const formula = data.formulas[formulaIndex];
        const edge = bin => formula.binWidth * bin;
        const digits = Math.max(0, -Math.floor(Math.log10(formula.binWidth) + 1e-9));
        byId('differences-heading').textContent = `How the differences spread (${formula.name})`;
        const end = edge(formula.bins.length);
        plot('histogram', 300, {
            description: `Histogram of the differences by ${formula.name}`,
            legend: {show: false},
            cursor: {drag: {x: false, y: false}},
            // The topmost lines of the plot belong to the texts of the marks.
            scales: {x: {time: false, range: [0, end]},
                y: {range: [0, Math.max(4, ...formula.bins) * 1.3]}},
            axes: [{label: `Difference by ${formula.name}`},
                {label: 'Patches', incrs: [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000]}],
            series: [{}, {fill: colourOf('--bar'), stroke: colourOf('--bar'), width: 0, points: {show: false},
                paths: uPlot.paths.bars({size: [1, Infinity], align: 1, gap: 1})}],
            plugins: [marks([
                {text: `mean ${differenceText(formula.mean)}`, value: formula.mean, dash: []},
                {text: `95th percentile ${differenceText(formula.percentile95)}`, value: formula.percentile95,
                    dash: [7, 4]},
                {text: `maximum ${differenceText(formula.maximum)}`, value: formula.maximum, dash: [2, 3]},
            ])],
        }, [formula.bins.map((_, bin) => edge(bin)), formula.bins]);
        byId('histogram-table').replaceChildren(table('Patches in each class of difference', [
            {head: 'from', cell: bin => figure(edge(bin), digits)},
            {head: 'to', cell: bin => figure(edge(bin + 1), digits)},
            {head: 'patches', cell: bin => String(formula.bins[bin])},
        ], formula.bins.map((_, bin) => bin)));
        byId('worst-heading').textContent = formula.worst.length < 10 && data.patches.length < 10
            ? `Patches by difference (${formula.name})` : `The ${formula.worst.length} worst patches (${formula.name})`;
        byId('worst-table').replaceChildren(table('Largest differences first; swatches: measured, reference',
            patchColumns(), rowsOf(formula.worst)));
    }

    // --- travel of a row

    let row = 0;
    const timesOf = travel => travel.positions.map((_, i) => i * travel.step);

    // The patches as fields in their colour behind the curve, from where the travel reaches them to where it
    // leaves them; the samples as dots on it, smaller where they lie close together.
    function fieldsAndSamples(travel) {
        const drawSamples = drawn => {
            const {ctx, bbox} = drawn;
            const places = travel.positions.map((position, i) => [drawn.valToPos(i * travel.step, 'x', true),
                drawn.valToPos(position, 'y', true)]);
            const radius = Math.max(1.6, Math.min(3, 0.35 * (places[1][0] - places[0][0]) / uPlot.pxRatio));
            ctx.save();
            ctx.beginPath();
            ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
            ctx.clip();
            ctx.fillStyle = colourOf('--mark');
            for (const [x, y] of places) {
                ctx.beginPath();
                ctx.arc(x, y, radius * uPlot.pxRatio, 0, 2 * Math.PI);
                ctx.fill();
            }
            ctx.restore();
        };
        return {hooks: {draw: travel.marks ? [drawSamples] : [], drawClear: [drawn => {
            const {ctx, bbox} = drawn;
            ctx.save();
            for (const {patch, from, to} of travel.fields) {
                const top = drawn.valToPos(to, 'y', true);
                const bottom = drawn.valToPos(from, 'y', true);
                ctx.fillStyle = data.patches[patch].measured.colour;
                ctx.globalAlpha = 0.55;
                ctx.fillRect(bbox.left, top, bbox.width, bottom - top);
            }
            ctx.restore();
        }]}};
    }

    function drawTravel() {
        const travel = data.rows[row];
        const times = timesOf(travel);
        plot('travel', 360, {
            description: `Position over time in ${travel.name}`,
            scales: {x: {time: false}, y: {range: [0, travel.distance]}},
            axes: [{label: 'Time since the start of the motion, s'}, {label: 'Way from the start, mm'}],
            series: [{label: 's', value: (_, value) => figure(value, 3)}, {label: travel.marks ? 'sample at mm' : 'mm',
                stroke: colourOf('--mark'), width: 1,
                value: (_, value) => figure(value, 1), points: {show: false}}],
            plugins: [fieldsAndSamples(travel)],
        }, [times, travel.positions]);
        byId('travel-notes').replaceChildren(...travel.notes.map(note => element('li', {}, note)));
        drawTravelTable();
    }

    function drawTravelTable() {
        const travel = data.rows[row];
        const at = position => {
            const field = travel.fields.find(({from, to}) => position >= from && position <= to);
            return field ? data.patches[field.patch].name : '';
        };
        const open = byId('travel-table').parentElement.open;
        byId('travel-table').replaceChildren(...(open ? [table(travel.marks ? 'Samples' : 'Positions', [
            {head: travel.marks ? 'sample' : 'point', cell: i => String(i)},
            {head: 's', cell: i => figure(i * travel.step, 4)},
            {head: 'mm', cell: i => figure(travel.positions[i], 2)},
            {head: 'on patch', text: true, cell: i => at(travel.positions[i])},
        ], travel.positions.map((_, i) => i))] : []));
    }

    function zoomTravel(from, to) {
        plots.get('travel').made.setScale('x', {min: from, max: to});
    }

    function buildTravel() {
        byId('row').append(...data.rows.map((travel, i) => element('option', {value: i}, travel.name)));
        byId('row').addEventListener('change', event => {
            row = Number(event.target.value);
            drawTravel();
        });
        byId('travel-table').parentElement.addEventListener('toggle', drawTravelTable);
        byId('whole-row').addEventListener('click', () => zoomTravel(0, data.rows[row].duration));
        byId('start-ramp').addEventListener('click', () => zoomTravel(0, 2 * data.rows[row].rampEnd));
        byId('end-ramp').addEventListener('click', () => zoomTravel(
            data.rows[row].duration - 2 * data.rows[row].rampEnd, data.rows[row].duration));
    }

    // --- tone values

    // Yellow can't be seen on white, nor black on black.
    const inkColour = ({ink, colour}) =>
        ({C: '#0a8fc4', M: '#d0218a', Y: '#b79500', K: colourOf('--text')})[ink] ?? colour;

    function drawTones() {
        const nominal = [...new Set(data.ramps.flatMap(ramp => ['measured', 'reference'].flatMap(side =>
            (ramp[side]?.points ?? []).map(point => point.nominal))))].sort((a, b) => a - b);
        const curves = data.ramps.flatMap(ramp => ['measured', 'reference'].filter(side => ramp[side])
            .map(side => ({ramp, side, points: new Map(ramp[side].points.map(point => [point.nominal, point]))})));
        plot('tones', 320, {
            description: 'Tone value increase of each ink over the nominal tone value',
            scales: {x: {time: false, range: [0, 100]}},
            axes: [{label: 'Nominal tone value, %'}, {label: 'Increase, %'}],
            series: [{label: 'nominal', value: (_, value) => figure(value, 0)}, ...curves.map(({ramp, side}) => ({
                label: ramp.ink + (side === 'reference' ? ' reference' : ''), stroke: inkColour(ramp), width: 2,
                dash: side === 'reference' ? [5, 4] : [], spanGaps: true, points: {show: side === 'measured', size: 5},
                value: (_, value) => figure(value, 1)}))],
        }, [nominal, ...curves.map(({points}) => nominal.map(value => {
            const point = points.get(value);
            return point ? point.toneValue - point.nominal : null;
        }))]);
    }

    function buildTones() {
        const points = data.ramps.flatMap(ramp => ramp.measured.points.map(point => ({ramp, point,
            aim: ramp.reference?.points.find(({nominal}) => nominal === point.nominal)})));
        const has = key => points.some(({point, aim}) => key === 'aim' ? aim : point[key] != null);
        const increase = point => figure(point && point.toneValue - point.nominal, 1);
        byId('tones-notes').replaceChildren(...data.ramps.map(({ink, measured, reference}) => element('li', {},
            `${ink}: Murray-Davies of the ${measured.light}` +
            (reference && reference.light !== measured.light ? `, of the reference at its ${reference.light}` : '') +
            (measured.filter ? `; of the instrument's densities with the ${measured.filter} filter` : '') + '.')),
        element('li', {}, 'SCTV: tone value of spot colours by ISO 20654, of tristimulus values; its aim is the nominal value.'));
        byId('tones-table').replaceChildren(table('Tone values in percent', [
            {head: 'Ink', text: true, cell: ({ramp}) => element('span', {}, element('span',
                {class: 'swatch', background: ramp.colour}), ramp.ink)},
            {head: 'Nominal', cell: ({point}) => figure(point.nominal, 0)},
            {head: 'Tone value', cell: ({point}) => figure(point.toneValue, 1)},
            {head: 'Increase', cell: ({point}) => increase(point)},
            ...(has('aim') ? [
                {head: 'Reference', cell: ({aim}) => figure(aim?.toneValue, 1)},
                {head: 'its increase', cell: ({aim}) => increase(aim)},
            ] : []),
            ...(has('ofDensities') ? [
                {head: 'Of densities', cell: ({point}) => figure(point.ofDensities, 1)},
                {head: 'Increase', cell: ({point}) => figure(point.ofDensities && point.ofDensities - point.nominal, 1)},
            ] : []),
            {head: 'SCTV', cell: ({point}) => figure(point.sctv, 1)},
            {head: 'SCTV off nominal', cell: ({point}) => figure(point.sctv - point.nominal, 1)},
        ], points));
    }

    // --- verdict and readings

    // Of a verdict's text: how it looks.
    const verdictClass = text => 'verdict ' + (['pass', 'fail'].includes(text) ? text : 'open');

    function buildVerdict({verdict, words, coverage, title, source, lines}) {
        byId('verdict').textContent = verdict;
        byId('verdict').className = verdictClass(verdict);
        byId('verdict-words').textContent = `${words.replace(/^[^:]*: /, '')}. ${coverage}`;
        byId('verdict-source').textContent = [title, source].filter(text => text).join('. ');
        const behind = line => element('span', {}, line.reason, ...(line.reason ? [' '] : []),
            ...line.behind.slice(0, 4).map(({patch, value}) =>
                element('span', {class: 'behind'}, link(patch), ` ${figure(value)}`)));
        const hasSources = lines.some(line => line.source);
        byId('verdict-table').replaceChildren(table('Each limit; patches with the largest values, largest first', [
            {head: 'Rule', text: true, cell: line => element('span', {}, line.rule,
                element('span', {class: 'what'}, line.what))},
            {head: 'Limit', cell: line => line.limit},
            {head: 'Value', cell: line => line.value},
            {head: 'Verdict', cell: line => element('span', {class: verdictClass(line.verdict)}, line.verdict)},
            {head: 'Patches', cell: line => String(line.patches)},
            {head: 'Behind it', text: true, cell: behind},
            ...(hasSources ? [{head: 'Source of the limit', text: true, cell: line => line.source}] : []),
        ], lines));
    }

    function buildReadings() {
        byId('readings-table').replaceChildren(table('Of each row and way: the fewest samples of a patch, the rest the ' +
            'largest of a patch', [
            {head: 'Row', cell: reading => reading.row},
            {head: 'Patches', cell: reading => String(reading.patches)},
            {head: 'Read', text: true, cell: reading => reading.way},
            {head: 'Samples', cell: reading => reading.samples > 0 ? String(reading.samples) : '–'},
            {head: 'Spread, CIE 1976', cell: reading => reading.samples > 0 ? figure(reading.spread) : '–'},
            {head: 'Edges, mm', cell: reading => reading.residual > 0 ? figure(reading.residual) : '–'},
            ...(data.readings.some(reading => reading.repeatSpread > 0) ? [{head: 'Scans from their mean, CIEDE2000',
                cell: reading => figure(reading.repeatSpread, 3)}] : []),
        ], data.readings));
    }

    // --- the page

    function buildHead() {
        byId('subject').textContent = `${data.patches.length} patches of ${data.measured}` +
            (data.reference ? `, compared with ${data.reference}` : ', without a reference');
        byId('notices').replaceChildren(...data.notices.map(notice => element('li', {}, notice)));
        byId('conditions').replaceChildren(table('As the measured file tells them', [
            {head: 'What', text: true, cell: ({name}) => name},
            {head: 'Value', text: true, cell: ({value}) => value},
        ], data.conditions));
        byId('program').textContent = `Made by ${data.program}. Colours: CIE 1931 2 degree observer, D50; shown in ` +
            'sRGB (D65) after Bradford adaptation. The 95th percentile lies between the two nearest differences, in ' +
            'proportion.';
        byId('summary').replaceChildren(table('Over all patches that have a reference', [
            {head: 'Formula', text: true, cell: formula => formula.name},
            {head: 'Patches', cell: formula => String(formula.count)},
            {head: 'Mean', cell: formula => differenceText(formula.mean)},
            {head: '95th percentile', cell: formula => differenceText(formula.percentile95)},
            {head: 'Maximum', cell: formula => differenceText(formula.maximum)},
        ], data.formulas));
    }

    function drawPlots() {
        if (shown >= 0) {
            drawPatch();
        }
        if (data.formulas.length > 0) {
            drawDifferences();
        }
        if (data.ramps.length > 0) {
            drawTones();
        }
        if (data.rows.length > 0) {
            drawTravel();
        }
    }

    overlaid = data.formulas.length > 0;
    buildHead();
    buildChart();
    if (overlaid) {
        buildOverlayChoice();
    }
    drawOverlay();
    buildTravel();
    if (data.verdict) {
        buildVerdict(data.verdict);
    }
    buildTones();
    byId('tones-section').classList.toggle('hidden', data.ramps.length === 0);
    buildReadings();
    byId('verdict-section').classList.toggle('hidden', !data.verdict);
    byId('readings-section').classList.toggle('hidden', data.readings.length === 0);
    byId('previous-page').addEventListener('click', () => turnPage(-1));
    byId('next-page').addEventListener('click', () => turnPage(1));
    drawPage();
    byId('chart-section').querySelector('.toolbar').classList.toggle('hidden', data.formulas.length === 0);
    for (const id of ['summary-section', 'differences-section', 'worst-section']) {
        byId(id).classList.toggle('hidden', data.formulas.length === 0);
    }
    byId('travel-section').classList.toggle('hidden', data.rows.length === 0);
    byId('conditions-section').classList.toggle('hidden', data.conditions.length === 0);
    // The worst patch is what a person wants to see first.
    select(data.formulas[0]?.worst[0] ?? 0, false);
    drawPlots();

    keepDrawn(drawPlots);
})();
