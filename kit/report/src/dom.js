// dom.js: elements of the page.

/**
 * An HTML element. Attributes that start with "on" are listeners, "class" and the rest attributes; null, false and
 * undefined are left out. Children are nodes or texts.
 */
export function h(tag, attributes, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes ?? {})) {
        if (value === null || value === undefined || value === false) continue;
        if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
        else element.setAttribute(name, value === true ? '' : value);
    }
    element.append(...children.flat().filter(child => child !== null && child !== undefined && child !== false));
    return element;
}

/** An SVG symbol of 20 x 20 from the text of its shapes. */
export function icon(shapes) {
    const holder = document.createElement('span');
    holder.className = 'icon';
    holder.innerHTML = `<svg viewBox="-10 -10 20 20" width="18" height="18" aria-hidden="true">${shapes}</svg>`;
    return holder;
}

/** Calls a function at most once per frame, however often the result is called. */
export function oncePerFrame(draw) {
    let isWaiting = false;
    return () => {
        if (isWaiting) return;
        isWaiting = true;
        requestAnimationFrame(() => {
            isWaiting = false;
            draw();
        });
    };
}
