// What the pages share: the data in the page, elements and tables, and plots that are drawn anew for another width, for
// the dark scheme and for paper. Texts reach a page only as text nodes and attributes, so names may hold any character.
const kit = (function () {
    'use strict';

    const data = JSON.parse(document.getElementById('report-data').textContent);
    const paperWidth = 640;  // pixels that fit on upright A4 and Letter
    const byId = id => document.getElementById(id);
    const figure = (value, digits = 2) => value == null ? '–' : value.toFixed(digits);
    const colourOf = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

    // attributes: class, style properties that start with "--", and any attribute
    function element(tag, attributes = {}, ...children) {
        const made = document.createElement(tag);
        for (const [name, value] of Object.entries(attributes)) {
            if (name.startsWith('--') || name === 'background') {
                made.style.setProperty(name, value);
            } else {
                made.setAttribute(name, value);
            }
        }
        made.append(...children);
        return made;
    }

    // Columns: {head, text (left-aligned), cell(row) giving a text or a node}
    function table(caption, columns, rows) {
        const kind = column => column.text ? {class: 'text'} : {};
        return element('table', {}, element('caption', {}, caption),
            element('thead', {}, element('tr', {},
                ...columns.map(column => element('th', {scope: 'col', ...kind(column)}, column.head)))),
            element('tbody', {}, ...rows.map(row => element('tr', {}, ...columns.map((column, i) => i === 0
                ? element('th', {scope: 'row', ...kind(column)}, column.cell(row))
                : element('td', kind(column), column.cell(row)))))));
    }

    function swatch(side) {
        return side ? element('span', {class: 'swatch', background: side.colour}) : '';
    }

    // --- plots: kept in a list, so that they are drawn anew for another width, scheme or for paper

    const plots = new Map();
    function plot(id, height, options, values) {
        plots.get(id)?.made.destroy();
        const place = byId(id);
        const width = onPaper ? options.paperWidth ?? paperWidth : Math.max(200, place.clientWidth);
        const axis = (axisOptions, index) => ({
            stroke: colourOf('--text'), grid: {stroke: colourOf('--grid'), width: 1},
            ticks: {stroke: colourOf('--line'), width: 1}, font: '12px system-ui, "DejaVu Sans", sans-serif',
            labelFont: '13px system-ui, "DejaVu Sans", sans-serif', labelSize: 20, labelGap: 0,
            size: index === 0 ? 34 : 50, ...axisOptions});
        const made = new uPlot({width, height, ...options, axes: options.axes.map(axis)}, values, place);
        const drawing = made.root.querySelector('.u-wrap');
        drawing.setAttribute('role', 'img');
        drawing.setAttribute('aria-label', options.description + '; the table below has its figures');
        plots.set(id, {made, width});
    }
    let onPaper = false;

    // Has the page's plots drawn anew when what they depend on changes.
    function keepDrawn(draw) {
        matchMedia('(prefers-color-scheme: dark)').addEventListener('change', draw);
        const setPaper = paper => {
            onPaper = paper;
            document.documentElement.classList.toggle('on-paper', paper);
            draw();
        };
        addEventListener('beforeprint', () => setPaper(true));
        addEventListener('afterprint', () => setPaper(false));
        let waiting = 0;
        addEventListener('resize', () => {
            clearTimeout(waiting);
            waiting = setTimeout(draw, 150);
        });
    }

    return {data, byId, figure, colourOf, element, table, swatch, plots, plot, keepDrawn};
})();
