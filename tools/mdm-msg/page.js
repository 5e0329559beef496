
/* SPDX-License-Identifier: Apache-2.0 */
'use strict';
(() => {
    const bytes = document.getElementById('bytes');
    const bar = document.getElementById('bar');
    const hint = 'Point at a field or at bytes. A click keeps them marked, Escape ends it.';

    // The number of a part -> its elements among the bytes.
    const runs = [];
    for (const run of bytes.querySelectorAll('[data-p]')) {
        (runs[run.dataset.p] ??= []).push(run);
    }

    const fieldOf = (part) => document.getElementById(`p${part}`);
    const holderOf = (node) => node instanceof Element ? node.closest('[data-p]') : null;

    // A name for each mark, and the elements that have it.
    const marked = {on: [], pin: [], within: []};

    function unmark(name) {
        for (const element of marked[name]) {
            element.classList.remove(name);
        }
        marked[name] = [];
    }

    function mark(name, elements) {
        unmark(name);
        for (const element of elements) {
            element.classList.add(name);
        }
        marked[name] = elements;
    }

    function alike(holder) {
        const [first, last = first] = holder.dataset.p.split('-').map(Number);
        const elements = [bytes.contains(holder) ? fieldOf(first) : holder];
        for (let part = first; part <= last; ++part) {
            elements.push(...runs[part]);
        }
        return elements;
    }

    // The summary of the outermost closed group that hides a field.
    function hiding(field) {
        let found = null;
        for (let node = field.parentElement; node; node = node.parentElement) {
            if (node.tagName === 'DETAILS' && !node.open) {
                found = node.firstElementChild;
            }
        }
        return found === null || found === field ? [] : [found];
    }

    function reveal(field) {
        for (let node = field.parentElement; node; node = node.parentElement) {
            if (node.tagName === 'DETAILS' && node.firstElementChild !== field) {
                node.open = true;
            }
        }
    }

    // "apn.profile[2].num0": a list is not named, because its elements are.
    function nameOf(field) {
        const names = [];
        for (let item = field.closest('li'); item; item = item.parentElement.closest('li')) {
            const holder = item.querySelector('[data-p]');
            if (holder === field || !holder.classList.contains('list')) {
                names.unshift(holder.querySelector('b').textContent);
            }
        }
        return names.join('.');
    }

    function describe(field) {
        if (field === null) {
            bar.textContent = hint;
            return;
        }
        const name = document.createElement('b');
        name.textContent = nameOf(field);
        const others = [...field.children].slice(1).map((child) => child.textContent);
        const place = others.pop().replace(/\d+/, (at) => `${at} (0x${Number(at).toString(16)})`);
        bar.replaceChildren(name, ` ${[...others, place].join(' · ')}`);
    }

    let hovered = null;
    let focused = null;
    let pinned = null;

    function show() {
        const holder = hovered ?? focused;
        const elements = holder === null ? [] : alike(holder);
        mark('on', elements);
        mark('within', holder === null ? [] : hiding(elements[0]));
        describe(holder !== null ? elements[0] : pinned);
    }

    function pin(holder) {
        if (pinned !== null) {
            pinned.removeAttribute('aria-current');
        }
        const elements = holder === null ? [] : alike(holder);
        pinned = elements[0] === undefined || elements[0] === pinned ? null : elements[0];
        mark('pin', pinned === null ? [] : elements);
        if (pinned !== null) {
            pinned.setAttribute('aria-current', 'true');
            reveal(pinned);
            bringIntoView(holder);
        }
        show();
    }

    // Scrolls to the other half of what an element stands for.
    function bringIntoView(holder) {
        const [field, first] = alike(holder);
        const other = bytes.contains(holder) ? field : first;
        other.scrollIntoView({block: 'nearest', inline: 'nearest'});
    }

    // Of the bytes, one part is reached with Tab, the others with the arrow keys.
    let stop = null;

    function setStop(run) {
        if (stop !== null) {
            stop.removeAttribute('tabindex');
        }
        stop = run;
        run.tabIndex = 0;
        run.setAttribute('role', 'button');
        run.setAttribute('aria-labelledby', `p${run.dataset.p}`);
    }

    function neighbourAmongBytes(run, step) {
        const next = runs[Number(run.dataset.p) + step];
        return next === undefined ? null : next[0];
    }

    function neighbourAmongFields(field, step) {
        const fields = [...document.querySelectorAll('.tree a, .tree summary')]
            .filter((one) => one.checkVisibility());
        return fields[fields.indexOf(field) + step] ?? null;
    }

    const steps = {ArrowDown: 1, ArrowUp: -1, ArrowRight: 1, ArrowLeft: -1};

    function move(event) {
        const from = event.target.closest('#bytes [data-p], .tree a, .tree summary');
        if (from === null) {
            return;
        }
        if (bytes.contains(from)) {
            const next = neighbourAmongBytes(from, steps[event.key]);
            if (next !== null) {
                setStop(next);
                next.focus();
            }
        } else if (event.key === 'ArrowDown' || event.key === 'ArrowUp') {
            neighbourAmongFields(from, steps[event.key])?.focus();
        } else if (from.tagName === 'SUMMARY') {
            from.parentElement.open = event.key === 'ArrowRight';
        }
        event.preventDefault();
    }

    document.addEventListener('pointerover', (event) => {
        hovered = event.pointerType === 'touch' ? null : holderOf(event.target);
        bar.ariaLive = 'off';
        show();
    });
    document.documentElement.addEventListener('pointerleave', () => {
        hovered = null;
        show();
    });
    document.addEventListener('focusin', (event) => {
        focused = event.target.matches(':focus-visible') ? holderOf(event.target) : null;
        bar.ariaLive = 'polite';
        if (focused !== null) {
            bringIntoView(focused);
        }
        show();
    });
    document.addEventListener('focusout', () => {
        focused = null;
        show();
    });
    document.addEventListener('click', (event) => {
        const holder = holderOf(event.target);
        const selects = String(getSelection()) !== '';
        if (holder === null || holder.tagName === 'SUMMARY' || selects) {
            return;
        }
        event.preventDefault();
        if (bytes.contains(holder)) {
            setStop(runs[holder.dataset.p][0]);
        }
        pin(holder);
    });
    document.addEventListener('keydown', (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        if (event.key === 'Escape') {
            pin(null);
        } else if (event.key in steps) {
            move(event);
        } else if ((event.key === 'Enter' || event.key === ' ') && event.target === stop) {
            event.preventDefault();
            pin(stop);
        }
    });

    if (runs[0] !== undefined) {
        setStop(runs[0][0]);
        bytes.removeAttribute('tabindex');
    }
    bar.hidden = false;
    show();
})();
