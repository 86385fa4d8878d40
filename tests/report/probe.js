// Uses the report as a person does and writes down what there is to see, a line for each thing, for the test to
// compare. Runs in the page, behind its own script.
(function () {
    'use strict';
    const lines = [];
    const see = (what, value) => lines.push(`${what}: ${value}`);
    const byId = id => document.getElementById(id);
    const text = id => byId(id).textContent.replace(/\s+/g, ' ').trim();
    const options = [...document.querySelectorAll('#chart [role=option]')];
    const shown = id => byId(id).getClientRects().length > 0;
    const press = key => document.activeElement.dispatchEvent(new KeyboardEvent('keydown', {key, bubbles: true}));
    const rows = id => byId(id).querySelectorAll('tbody tr').length;

    // Colours other than the page's own behind it: whether something has been drawn.
    const inkOf = id => {
        const canvas = byId(id).querySelector('canvas');
        if (!canvas) {
            return 'no canvas';
        }
        const pixels = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
        const colours = new Set();
        for (let i = 0; i < pixels.length; i += 4) {
            if (pixels[i + 3] > 0) {
                colours.add(pixels[i] << 16 | pixels[i + 1] << 8 | pixels[i + 2]);
            }
        }
        return colours.size > 3 ? 'drawn' : 'empty';
    };

    // What reaches beyond the window and lies in no box of its own that scrolls.
    const seeSideways = () => see('sideways', [...document.body.querySelectorAll('*')].filter(node =>
        !node.closest('.scroll, .plot') && node.getBoundingClientRect().right > innerWidth + 0.5).map(node =>
        node.tagName + ' ' + node.id).join(', '));

    const lookAtTrend = () => {
        const list = selector => [...document.querySelectorAll(selector)];
        see('subject', text('subject'));
        see('notices', text('notices'));
        seeSideways();
        see('curves', list('#curves h3').map(node => node.textContent).join(' | '));
        see('curve plots', list('#curves .plot').map(({id}) => inkOf(id)).join(' '));
        see('rings', list('#glance tbody tr').map(row => row.lastElementChild.textContent).join(' '));
        see('patch plots', list('#worst .plot').filter(({id}) => inkOf(id) === 'drawn').length + ' drawn');
        see('patch table', rows('worst-table'));
        see('patches', list('#worst h3').map(node => node.textContent).join(' | '));
        see('tones', shown('tones-section') ? list('#tones h3').map(node => node.textContent) + ' ' +
            inkOf('tones-0') + ' ' + rows('tones-table') + ' rows' : 'hidden');
        see('order', list('#measurements tbody td:nth-child(2)').map(node => node.textContent).join(' '));
    };

    const lookAtReport = () => {
        see('subject', text('subject'));
        see('patches', options.length);
        see('names', options.slice(0, 4).map(option => option.getAttribute('aria-label')).join(' | '));
        for (const section of ['verdict', 'summary', 'differences', 'worst', 'tones', 'readings', 'travel', 'conditions']) {
            see(section, shown(section + '-section') ? 'shown' : 'hidden');
        }
        see('told verdict', text('verdict') + ' ' + text('verdict-words'));
        see('limits', [...byId('verdict-table').querySelectorAll('tbody tr')].map(row =>
            [...row.cells].map(cell => cell.textContent.trim()).join(' ')).join(' | '));
        see('marks', options.filter(option => getComputedStyle(option, '::after').content !== 'none').length);
        // What of a mark or a figure reaches beyond its patch, over a neighbour or cut off.
        see('marks beyond their patches', options.filter(option => option.scrollHeight > option.clientHeight + 1 ||
            option.scrollWidth > option.clientWidth + 1).length);
        see('tone values', [...byId('tones-table').querySelectorAll('tbody tr')].slice(0, 6).map(row =>
            [...row.cells].slice(0, 4).map(cell => cell.textContent.trim()).join(' ')).join(' | '));
        seeSideways();
        see('selected', text('patch-name') + ' ' + text('patch-figures'));
        for (const id of ['spectrum', 'histogram', 'tones', 'travel']) {
            see(id + ' plot', inkOf(id));
        }
        see('rows in tables', ['all-table', 'worst-table', 'histogram-table', 'spectrum-table'].map(rows).join(' '));

        // hover shows a patch, leaving goes back
        options[0].dispatchEvent(new PointerEvent('pointerover', {bubbles: true}));
        see('hover', text('patch-name'));
        byId('chart').dispatchEvent(new PointerEvent('pointerleave'));
        see('left', text('patch-name'));

        // keyboard: one patch can be reached by Tab, arrows go on from there
        see('in tab order', options.filter(option => option.tabIndex === 0).length);
        options[0].click();
        press('ArrowRight');
        see('right', text('patch-name'));
        press('ArrowDown');
        see('down', text('patch-name'));
        press('End');
        see('end', text('patch-name'));
        see('focus', options.indexOf(document.activeElement));

        if (shown('summary-section')) {
            see('summary table', [...byId('summary').querySelectorAll('tbody tr')].map(row =>
                [...row.cells].map(cell => cell.textContent).join(' ')).join(' | '));
            const radios = [...document.querySelectorAll('#overlay input')];
            see('overlays', radios.map(radio => radio.parentElement.textContent.trim()).join(' | '));
            radios[1].click();
            see('CIE 1976', options[0].getAttribute('aria-label') + ' | ' + text('worst-heading') + ' | ' +
                byId('worst-table').querySelector('tbody button').textContent);
            radios[2].click();
            see('off', byId('chart').className);
            radios[0].click();
        }
        if (shown('travel-section')) {
            see('rows to choose', byId('row').options.length);
            byId('travel-table').parentElement.open = true;
        }
    };

    // A trace: the bed and the dialogue follow the time, which slider, buttons and playing move.
    const lookAtTrace = () => {
        const slider = byId('slider');
        const current = () => document.querySelector('#lines [aria-current]').textContent;
        const goTo = seconds => {
            slider.value = seconds * 1e6;
            slider.dispatchEvent(new Event('input'));
        };
        see('subject', text('subject'));
        seeSideways();
        see('rows in tables', ['rows', 'failures'].map(rows).join(' '));
        see('first line', document.querySelector('#lines li').textContent);
        see('begin', text('bed-text'));
        const before = byId('bed').toDataURL();
        goTo(1000);
        see('end', text('bed-text'));
        see('end of dialogue', current().slice(0, 60));
        see('bed plot', before === byId('bed').toDataURL() ? 'the same' : 'drawn');
        byId('previous').click();
        see('last failure', current());
        byId('rows').querySelector('button').click();
        see('row 1', text('bed-text'));
        const begin = Number(slider.value);
        const row = kit.data.tables[0].motions.find(motion => motion.kind === 'scan');
        goTo((row.begin + row.end) / 2e6);
        see('half-way', text('bed-text'));
        goTo(begin / 1e6);
        byId('play').click();
        see('button', text('play'));
        setTimeout(() => see('playing', Number(slider.value) > begin ? 'time goes on' : 'time stands'), 1000);
    };

    setTimeout(() => {
        try {
            (byId('curves') ? lookAtTrend : byId('bed') ? lookAtTrace : lookAtReport)();
        } catch (error) {
            see('failed', error);
        }
        setTimeout(() => {
            see('travel table', byId('travel-table') && rows('travel-table') > 0 ? 'filled' : 'empty');
            const list = document.createElement('pre');
            list.id = 'probe';
            list.hidden = true;
            list.textContent = '\n' + lines.join('\n') + '\n';
            document.body.append(list);
            parent.postMessage(list.textContent, '*');
        }, byId('bed') ? 1200 : 100);
    }, 300);
})();
