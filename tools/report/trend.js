// Draws the trend from the data in the page.
(function () {
    'use strict';

    const {data, byId, figure, colourOf, element, table, swatch, plot, keepDrawn} = kit;
    const count = data.measurements.length;
    const numbers = Array.from({length: count}, (_, i) => i + 1);
    const times = data.dated ? data.measurements.map(({time}) => time) : numbers;
    const nameOf = index => data.measurements[index]?.name ?? '–';
    const inUtc = seconds => uPlot.tzDate(new Date(seconds * 1e3), 'Etc/UTC');

    // --- curves

    // The first and the last moment, with a little room, also where all are the same.
    function span() {
        const [first, last] = [times[0], times[count - 1]];
        const room = Math.max((last - first) * 0.03, data.dated ? 3600 : 0.3);
        return [first - room, last + room];
    }

    // Level lines, the stretch of the baseline, and rings about the values that lie outside.
    function limitsOf(curve) {
        const level = (drawn, value, dash, colour) => {
            const {ctx, bbox} = drawn;
            const y = Math.round(drawn.valToPos(value, 'y', true));
            ctx.setLineDash(dash.map(part => part * uPlot.pxRatio));
            ctx.strokeStyle = colourOf(colour);
            ctx.lineWidth = 1.5 * uPlot.pxRatio;
            ctx.beginPath();
            ctx.moveTo(bbox.left, y);
            ctx.lineTo(bbox.left + bbox.width, y);
            ctx.stroke();
        };
        const under = drawn => {
            const {ctx, bbox} = drawn;
            ctx.save();
            const end = data.baseline === count ? span()[1] : (times[data.baseline - 1] + times[data.baseline]) / 2;
            ctx.fillStyle = colourOf('--raised');
            ctx.fillRect(bbox.left, bbox.top, drawn.valToPos(end, 'x', true) - bbox.left, bbox.height);
            if (curve.control) {
                level(drawn, curve.control.mean, [], '--line');
                level(drawn, curve.control.upper, [6, 4], '--quiet');
                level(drawn, curve.control.lower, [6, 4], '--quiet');
            }
            ctx.restore();
        };
        const over = drawn => {
            const {ctx} = drawn;
            ctx.save();
            if (curve.limit != null) {
                level(drawn, curve.limit, [2, 3], '--reference');
            }
            ctx.setLineDash([]);
            ctx.strokeStyle = colourOf('--reference');
            ctx.lineWidth = 2 * uPlot.pxRatio;
            for (const index of curve.outside) {
                ctx.beginPath();
                ctx.arc(drawn.valToPos(times[index], 'x', true), drawn.valToPos(curve.values[index], 'y', true),
                    7 * uPlot.pxRatio, 0, 2 * Math.PI);
                ctx.stroke();
            }
            ctx.restore();
        };
        return {hooks: {drawClear: [under], draw: [over]}};
    }

    const largestOf = curve => Math.max(0.1, curve.control?.upper ?? 0, ...curve.values.map(value => value ?? 0));
    // A limit that nothing comes near would press the curve flat.
    const topOf = curve => Math.max(largestOf(curve), curve.limit <= 3 * largestOf(curve) ? curve.limit : 0) * 1.12;
    const titleOf = curve => `${curve.name}: ${curve.what}`;

    function limitsText(curve) {
        return [curve.limit == null ? '' : `limit ${curve.limitText}`, curve.control
            ? `mean ${figure(curve.control.mean)}, control limits ${figure(curve.control.lower)} to ` +
                figure(curve.control.upper) : 'no control limits'].filter(text => text).join('; ');
    }

    const dayText = uPlot.fmtDate('{YYYY}-{MM}-{DD}');
    const hourText = uPlot.fmtDate('{MM}-{DD} {HH}:{mm}');
    const timeAxis = () => data.dated ? {space: 90, values: (_, splits, __, ___, step) =>
        splits.map(moment => (step >= 86400 ? dayText : hourText)(inUtc(moment)))} : {label: 'Measurement', incrs: [1, 2, 5, 10, 20, 50, 100, 200, 500]};
    const timeSeries = () => ({label: 'Measurement', value: (_, __, ___, index) => index == null ? '–' : nameOf(index)});
    // Half of the last date reaches beyond the last line of the grid.
    const padding = data.dated ? [null, 38, null, null] : undefined;
    const scales = top => ({x: {time: data.dated, range: span()}, y: {range: [0, top]}});

    function drawCurve(curve, index) {
        plot(`curve-${index}`, 220, {
            description: `${titleOf(curve)} over the measurements`,
            paperWidth: 310,
            padding,
            tzDate: inUtc,
            scales: scales(topOf(curve)),
            axes: [timeAxis(), {}],
            series: [timeSeries(), {label: curve.what, stroke: colourOf('--measured'), width: 2, spanGaps: true,
                points: {show: true, size: 6, fill: colourOf('--measured')}, value: (_, value) => figure(value)}],
            plugins: [limitsOf(curve)],
        }, [times, curve.values]);
    }

    function drawWorst() {
        const top = Math.max(0.1, ...data.worst.flatMap(({values}) => values)) * 1.1;
        data.worst.forEach((patch, index) => plot(`worst-${index}`, 120, {
            description: `Difference of patch ${patch.name} over the measurements`,
            paperWidth: 200,
            padding,
            tzDate: inUtc,
            scales: scales(top),
            legend: {show: false},
            cursor: {drag: {x: false, y: false}},
            axes: [{...timeAxis(), label: undefined}, {size: 36}],
            series: [timeSeries(), {stroke: colourOf('--measured'), width: 2, points: {show: true, size: 4,
                fill: colourOf('--measured')}}],
        }, [times, patch.values]));
    }

    // --- tone values

    // The earlier measurements pale, the last one over them, the reference dashed.
    function drawTones(tones, index) {
        const value = (_, figures) => figure(figures, 1);
        const every = [...tones.increases.flat(), ...(tones.reference ?? [])].filter(one => one != null);
        const pale = {stroke: colourOf('--bar'), width: 1, alpha: 0.6, spanGaps: true, points: {show: false}};
        plot(`tones-${index}`, 240, {
            description: `Tone value increase of ${tones.ink} in all measurements`,
            paperWidth: 310,
            legend: {show: false},
            cursor: {drag: {x: false, y: false}},
            scales: {x: {time: false, range: [0, 100]},
                y: {range: [Math.min(0, ...every) * 1.1, Math.max(1, ...every) * 1.1]}},
            axes: [{label: 'Nominal tone value, %'}, {label: 'Increase, %'}],
            series: [{}, ...tones.increases.map((_, i) => i < count - 1 ? {...pale, value} : {...pale, value, alpha: 1,
                stroke: colourOf('--measured'), width: 2.5, points: {show: true, size: 5}}),
            ...(tones.reference ? [{...pale, value, alpha: 1, stroke: colourOf('--reference'), width: 2, dash: [5, 4]}]
                : [])],
        }, [tones.nominal, ...tones.increases, ...(tones.reference ? [tones.reference] : [])]);
    }

    function buildTones() {
        byId('tones').append(...data.ramps.map((tones, index) => element('div', {},
            element('h3', {}, tones.ink), element('p', {class: 'limits'}, `Murray-Davies of the ${tones.light}` +
                (tones.sameLight ? '' : ' in the last measurement, of another light in others')),
            element('div', {class: 'plot', id: `tones-${index}`}))));
        byId('tones-help').textContent = 'Thick: the last measurement; thin: those before it' +
            (data.ramps.some(({reference}) => reference) ? '; dashed: the reference.' : '.');
        byId('tones-table').replaceChildren(table('Tone value increase in percent', [
            {head: 'Ink', text: true, cell: ([tones]) => tones.ink},
            {head: 'Nominal', cell: ([tones, step]) => figure(tones.nominal[step], 0)},
            ...data.measurements.map(({name}, i) => ({head: name,
                cell: ([tones, step]) => figure(tones.increases[i][step], 1)})),
            ...(data.ramps.some(({reference}) => reference) ? [{head: 'Reference',
                cell: ([tones, step]) => figure(tones.reference?.[step], 1)}] : []),
        ], data.ramps.flatMap(tones => tones.nominal.map((_, step) => [tones, step]))));
    }

    function draw() {
        data.curves.forEach(drawCurve);
        drawWorst();
        data.ramps.forEach(drawTones);
    }

    // --- the page

    const marked = (text, isBad) => isBad ? element('span', {class: 'bad'}, text) : text;
    const isFailed = (curve, value) => curve.limit != null && value != null && value > curve.limit;

    function buildCurves() {
        byId('curves').append(...data.curves.map((curve, index) => element('div', {},
            element('h3', {}, titleOf(curve)), element('p', {class: 'limits'}, limitsText(curve)),
            element('div', {class: 'plot', id: `curve-${index}`}))));
        byId('worst').append(...data.worst.map((patch, index) => element('div', {},
            element('h3', {}, swatch(patch.last), swatch(patch.reference),
                `${patch.name}: ${figure(patch.values[count - 1])}`),
            element('div', {class: 'plot', id: `worst-${index}`}))));
        byId('worst-table').replaceChildren(table('Difference from the reference (CIEDE2000)', [
            {head: 'Patch', text: true, cell: ({name}) => name},
            ...data.measurements.map(({name}, i) => ({head: name, cell: ({values}) => figure(values[i])})),
        ], data.worst));
        byId('curves-help').textContent = `Shaded: the ${data.baseline} measurements that the control limits are of. ` +
            'Line: their mean; dashed: the mean and 2.66 times their mean moving range up and down; ring: a measurement ' +
            'outside.' + (data.curves.some(({limit}) => limit != null) ? ' Dotted: the limit of the tolerances.' : '');
    }

    function buildGlance() {
        const last = curve => curve.values[count - 1];
        const isOutside = curve => curve.outside.includes(count - 1);
        byId('glance').replaceChildren(table('The last measurement against the limits', [
            {head: 'Figure', text: true, cell: titleOf},
            {head: 'Last', cell: curve => marked(curve.lastText, isOutside(curve) || isFailed(curve, last(curve)))},
            {head: 'Limit', cell: ({limitText}) => limitText ?? '–'},
            {head: 'Mean', cell: ({control}) => figure(control?.mean)},
            {head: 'Lower', cell: ({control}) => figure(control?.lower)},
            {head: 'Upper', cell: ({control}) => figure(control?.upper)},
            {head: 'Outside', cell: ({outside}) => marked(String(outside.length), outside.length > 0)},
        ], data.curves));
    }

    function buildMeasurements() {
        const hasVerdicts = data.measurements.some(({verdict}) => verdict);
        byId('measurements').replaceChildren(table('In the order of the curves; what is outside or beyond its limit is bold',
            [
                {head: 'No.', cell: i => String(i + 1)},
                {head: 'File', text: true, cell: nameOf},
                {head: 'Date', cell: i => data.measurements[i].date},
                ...(hasVerdicts ? [{head: 'Verdict', text: true,
                    cell: i => marked(data.measurements[i].verdict, data.measurements[i].verdict === 'fail')}] : []),
                ...data.curves.map(curve => ({head: titleOf(curve), cell: i => marked(figure(curve.values[i]),
                    curve.outside.includes(i) || isFailed(curve, curve.values[i]))})),
            ], Array.from({length: count}, (_, i) => i)));
    }

    const [first, last] = [data.measurements[0], data.measurements[count - 1]];
    byId('subject').textContent = `${count} measurements of ${data.patches} patches` +
        (data.dated ? `, ${first.date} to ${last.date}` : '') + `, compared with ${data.reference}`;
    byId('notices').replaceChildren(...data.notices.map(notice => element('li', {}, notice)));
    byId('program').textContent = `Made by ${data.program}. Colours: CIE 1931 2 degree observer, D50.` +
        (data.dated ? ' Times are UTC.' : '');
    byId('worst-section').classList.toggle('hidden', data.worst.length === 0);
    buildGlance();
    buildCurves();
    buildTones();
    byId('tones-section').classList.toggle('hidden', data.ramps.length === 0);
    buildMeasurements();
    draw();
    keepDrawn(draw);
})();
