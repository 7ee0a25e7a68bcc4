// Draws the figure of the page with uPlot.  Texts from the data only ever become text nodes and drawings.
"use strict";
(() => {
  const figure = JSON.parse(document.getElementById("figure").textContent);
  const isDark = matchMedia("(prefers-color-scheme: dark)");
  const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();
  const format = (value) => (value == null || !isFinite(value) ? "–" : String(Number(value.toPrecision(7))));
  const FONT = "12px system-ui, sans-serif";
  const HEIGHT = figure.panels.length > 1 ? 320 : 520;
  const RIGHT = figure.panels.some((panel) => panel.image) ? 90 : 30; // pixels: the colours of an image stand there

  const black = "#000000";
  const curveColour = (index, count) => {
    const name = figure.colours[count === 1 ? 1 : index % figure.colours.length];
    return isDark.matches && name === black ? "#ffffff" : name;
  };

  // ---- Data ------------------------------------------------------------------------------------

  // Even steps are written as the first, the step and the number.
  const expanded = (x) => (Array.isArray(x) ? x : Array.from({ length: x.count }, (_, i) => x.from + i * x.step));

  // A logarithmic axis has no place for what is not above 0.
  function pointsOf(curve, panel) {
    const x = expanded(curve.x);
    const first = panel.logarithmic ? x.findIndex((value) => value > 0) : 0;
    return first === 0 ? [x, curve.y] : [x.slice(first), curve.y.slice(first)];
  }

  const increases = (x) => x.every((value, i) => i === 0 || value >= x[i - 1]);

  function limitsOf(lists) {
    let low = Infinity, high = -Infinity;
    for (const list of lists)
      for (const value of list)
        if (value != null) {
          low = Math.min(low, value);
          high = Math.max(high, value);
        }
    return low <= high ? [low, high] : [0, 1];
  }

  function widened([low, high]) {
    const half = (Math.abs(low) || 1) / 2;
    return high > low ? [low, high] : [low - half, low + half];
  }

  function padded(low, high) {
    const [from, to] = widened([low, high]);
    return [from - 0.05 * (to - from), to + 0.05 * (to - from)];
  }

  // ---- Drawing on uPlot's canvas ---------------------------------------------------------------

  // In the panel's frame, in pixels of the screen.
  function inFrame(u, draw) {
    const { ctx, bbox } = u, ratio = devicePixelRatio;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    ctx.scale(ratio, ratio);
    ctx.font = FONT;
    draw(ctx, {
      left: bbox.left / ratio, top: bbox.top / ratio, width: bbox.width / ratio, height: bbox.height / ratio,
      x: (value) => u.valToPos(value, "x", true) / ratio,
      y: (value) => u.valToPos(value, "y", true) / ratio,
    });
    ctx.restore();
  }

  function drawLine(ctx, x1, y1, x2, y2) {
    ctx.beginPath();
    ctx.moveTo(x1, y1);
    ctx.lineTo(x2, y2);
    ctx.stroke();
  }

  function drawMarks(ctx, frame, panel) {
    ctx.strokeStyle = ctx.fillStyle = colour("mark");
    ctx.setLineDash([5, 4]);
    for (const mark of panel.marks) {
      const x = frame.x(mark.at);
      drawLine(ctx, x, frame.top, x, frame.top + frame.height);
      ctx.save();
      ctx.translate(x + (mark.before ? -4 : 12), frame.top + (mark.top ? 8 : frame.height - 8));
      ctx.rotate(-Math.PI / 2);
      ctx.textAlign = mark.top ? "right" : "left";
      ctx.fillText(mark.label, 0, 0);
      ctx.restore();
    }
    for (const level of panel.levels) {
      const y = frame.y(level.at);
      drawLine(ctx, frame.left, y, frame.left + frame.width, y);
      ctx.textAlign = "center";
      ctx.fillText(level.label, frame.left + (panel.key_below ? 0.45 : 0.16) * frame.width, y - 6);
    }
    ctx.setLineDash([]);
    ctx.textAlign = "center";
    ctx.fillStyle = colour("text");
    for (const label of panel.labels) drawLabel(ctx, frame, label);
    for (const band of panel.bands) drawBandLabel(ctx, frame, panel, band);
  }

  // Within the panel: a logarithmic axis has no place for 0.
  const placesOf = (band, frame, panel) => [
    Math.max(frame.x(Math.max(band.x[0], panel.x[0])), frame.left),
    Math.min(frame.x(Math.min(band.x[1], panel.x[1])), frame.left + frame.width),
  ];

  function drawBandLabel(ctx, frame, panel, band) {
    const [from, to] = placesOf(band, frame, panel);
    if (!(from < to)) return;
    ctx.save();
    ctx.translate((from + to) / 2 + 4, frame.top + 8);
    ctx.rotate(-Math.PI / 2);
    ctx.textAlign = "right";
    ctx.fillText(band.label, 0, 0);
    ctx.restore();
  }

  function drawBands(ctx, frame, panel) {
    for (const band of panel.bands) {
      const [from, to] = placesOf(band, frame, panel);
      if (!(from < to)) continue;
      ctx.fillStyle = figure.band;
      ctx.globalAlpha = 0.25;
      ctx.fillRect(from, frame.top, to - from, frame.height);
      ctx.globalAlpha = 1;
    }
  }

  // Within the panel, as long as what it belongs to is.
  function drawLabel(ctx, frame, { x, y, text }) {
    const half = ctx.measureText(text).width / 2 + 3, place = frame.x(x);
    if (place < frame.left || place > frame.left + frame.width) return;
    const middle = Math.min(Math.max(place, frame.left + half), frame.left + frame.width - half);
    ctx.fillText(text, middle, Math.max(frame.y(y) - 5, frame.top + 12));
  }

  const SHAPES = {
    line: null,
    points: (ctx, x, y) => ctx.arc(x, y, 4.5, 0, 2 * Math.PI),
    crosses: (ctx, x, y) => {
      for (const side of [-4, 4]) {
        ctx.moveTo(x - 4, y - side);
        ctx.lineTo(x + 4, y + side);
      }
    },
  };

  function drawCurve(ctx, frame, curve, [xs, ys], stroke) {
    const shape = SHAPES[curve.style];
    ctx.strokeStyle = stroke;
    ctx.lineWidth = 1.5;
    ctx.beginPath();
    xs.forEach((value, i) => {
      const x = frame.x(value), y = frame.y(ys[i]);
      if (shape && curve.style === "points") ctx.moveTo(x + 4.5, y);
      if (shape) shape(ctx, x, y);
      else if (i === 0 || ys[i] == null || ys[i - 1] == null) ctx.moveTo(x, y);
      else ctx.lineTo(x, y);
    });
    ctx.stroke();
  }

  function drawCurves(ctx, frame, panel, points) {
    points.forEach((p, i) => drawCurve(ctx, frame, panel.curves[i], p, curveColour(i, points.length)));
    if (points.length > 1) drawKey(ctx, frame, panel);
  }

  function drawKey(ctx, frame, panel) {
    ctx.textAlign = "right";
    panel.curves.forEach((curve, i) => {
      ctx.fillStyle = curveColour(i, panel.curves.length);
      ctx.fillText(curve.title, frame.left + frame.width - 8, frame.top + 16 * (i + 1));
    });
  }

  // ---- Images ----------------------------------------------------------------------------------

  const channels = (name) => [1, 3, 5].map((i) => parseInt(name.slice(i, i + 2), 16));
  const palette = figure.palette.map(channels);

  function paletteColour(part) {
    const place = Math.min(Math.max(part, 0), 1) * (palette.length - 1);
    const i = Math.min(Math.floor(place), palette.length - 2);
    return palette[i].map((from, k) => Math.round(from + (place - i) * (palette[i + 1][k] - from)));
  }

  // A pixel for each cell; the first row of values is the lowest.
  function bitmapOf(image) {
    const canvas = document.createElement("canvas");
    [canvas.width, canvas.height] = [image.columns, image.rows];
    const context = canvas.getContext("2d"), pixels = context.createImageData(image.columns, image.rows);
    const [low, high] = widened(image.range);
    image.values.forEach((value, i) => {
      if (value == null) return;
      const row = image.rows - 1 - Math.floor(i / image.columns), at = 4 * (row * image.columns + (i % image.columns));
      pixels.data.set([...paletteColour((value - low) / (high - low)), 255], at);
    });
    context.putImageData(pixels, 0, 0);
    return canvas;
  }

  function drawImage(u, image, bitmap) {
    inFrame(u, (ctx, frame) => {
      const left = frame.x(image.x[0]), top = frame.y(image.y[1]);
      ctx.imageSmoothingEnabled = false;
      ctx.drawImage(bitmap, left, top, frame.x(image.x[1]) - left, frame.y(image.y[0]) - top);
    });
  }

  function drawBar(u, image) {
    const { ctx, bbox } = u, ratio = devicePixelRatio, [low, high] = widened(image.range);
    const left = (bbox.left + bbox.width) / ratio + 12, top = bbox.top / ratio, height = bbox.height / ratio;
    ctx.save();
    ctx.scale(ratio, ratio);
    ctx.font = FONT;
    for (let y = 0; y < height; ++y) {
      ctx.fillStyle = `rgb(${paletteColour(1 - y / height).join()})`;
      ctx.fillRect(left, top + y, 14, 1.5);
    }
    ctx.fillStyle = colour("text");
    ctx.textAlign = "left";
    for (let i = 0; i <= 4; ++i) {
      const value = Number((low + (i / 4) * (high - low)).toPrecision(3));
      ctx.fillText(String(value), left + 18, top + height * (1 - i / 4) + 4);
    }
    ctx.translate(left + 72, top + height / 2);
    ctx.rotate(-Math.PI / 2);
    ctx.textAlign = "center";
    ctx.fillText(image.label, 0, 0);
    ctx.restore();
  }

  function imageValue(image, x, y) {
    const column = Math.floor(((x - image.x[0]) / (image.x[1] - image.x[0])) * image.columns);
    const row = Math.floor(((y - image.y[0]) / (image.y[1] - image.y[0])) * image.rows);
    const inside = column >= 0 && column < image.columns && row >= 0 && row < image.rows;
    return inside ? image.values[row * image.columns + column] : null;
  }

  // ---- Panels ----------------------------------------------------------------------------------

  const groups = new Map(); // panels over the same axis, which are zoomed together

  // uPlot closes gaps that are narrower than a pixel, as where a phase jumps.
  function pathWithGaps(u, index, first, last) {
    const [xs, ys] = [u.data[0], u.data[index]], path = new Path2D();
    let drawing = false;
    for (let i = Math.max(first - 1, 0); i <= Math.min(last + 1, xs.length - 1); ++i) {
      if (ys[i] === undefined) continue; // a place that only another curve has
      const isGap = ys[i] === null;
      if (!isGap) path[drawing ? "lineTo" : "moveTo"](u.valToPos(xs[i], "x", true), u.valToPos(ys[i], "y", true));
      drawing = !isGap;
    }
    return { stroke: path, fill: null, clip: null, band: null, gaps: null, flags: 0 };
  }

  function seriesOf(curve, index, panel) {
    const stroke = () => curveColour(index, panel.curves.length);
    const shown = curve.style !== "line";
    return {
      label: (panel.curves.length > 1 && curve.title) || panel.y_label || "value",
      stroke, width: 1.5, pxAlign: 0, spanGaps: false,
      paths: shown ? () => null : curve.y.includes(null) ? pathWithGaps : undefined,
      points: shown ? { show: true, size: 7, stroke } : undefined,
      value: (u, value) => format(value),
    };
  }

  // Rows of numbers in uPlot's order: x, then each curve.  Curves that run back and forth are drawn by hand.
  function dataOf(panel, points, fullX) {
    const byHand = panel.image != null || !points.every(([x]) => increases(x));
    if (byHand) return { byHand, data: [fullX, [null, null]], series: [{}, { paths: () => null }] };
    const series = [{ label: panel.x_label || "x", value: (u, value) => format(value) }];
    panel.curves.forEach((curve, i) => series.push(seriesOf(curve, i, panel)));
    return { byHand, series, data: points.length === 1 ? points[0] : uPlot.join(points) };
  }

  function fullRanges(panel, points) {
    const { image } = panel;
    const x = image ? image.x : limitsOf(points.map(([xs]) => xs));
    const y = image ? image.y : limitsOf(points.map(([, ys]) => ys));
    const chosen = (limits, found) => widened([limits[0] ?? found[0], limits[1] ?? found[1]]);
    return { x: chosen(panel.x, x), y: chosen(panel.y, y) };
  }

  const IN_A_DECADE = [1, 2, 3, 4, 5, 6, 7, 8, 9];
  const decadesOf = (low, high) => Math.log10(high / low);
  const isNarrow = (low, high) => decadesOf(low, high) < 0.7;

  function logarithmicSplits(low, high) {
    const splits = [];
    if (isNarrow(low, high)) {
      const rough = (high - low) / 6, unit = 10 ** Math.floor(Math.log10(rough));
      const step = unit * [1, 2, 5, 10].find((factor) => factor * unit >= rough);
      for (let i = Math.ceil(low / step); i * step <= high; ++i) splits.push(i * step);
    } else {
      for (let k = Math.floor(Math.log10(low)); k <= Math.log10(high); ++k)
        for (const factor of IN_A_DECADE) splits.push(factor * 10 ** k);
    }
    return splits.filter((value) => value >= low && value <= high);
  }

  // The fewer decades, the more lines have a number.
  function isNumbered(value, { min, max }) {
    const decades = decadesOf(min, max), factor = Math.round(value / 10 ** Math.floor(Math.log10(value) + 1e-9));
    if (isNarrow(min, max)) return true;
    return (decades > 2 ? [1] : decades > 1 ? [1, 2, 5] : IN_A_DECADE).includes(factor);
  }

  // With an ellipsis in the middle, because a name often ends in its unit.
  function shortened(text) {
    const letters = [...text], half = Math.floor(HEIGHT / 18);
    if (letters.length <= 2 * half) return text;
    return letters.slice(0, half).join("") + "…" + letters.slice(1 - half).join("");
  }

  function axesOf(panel) {
    const text = () => colour("text"), faint = () => colour("grid");
    const common = { stroke: text, font: FONT, labelFont: FONT, ticks: { stroke: faint } };
    const grid = panel.image ? { show: false } : { stroke: faint, width: 1 };
    const values = (u, splits) => splits.map((value) => (value == null ? "" : String(Number(value.toPrecision(6)))));
    const y = { ...common, grid, values, label: shortened(panel.y_label), size: 70, labelSize: 22 };
    if (panel.step && panel.step % 45 === 0) y.incrs = [0.1, 0.5, 1, 5, 15, 45, 90, 180];
    const x = { ...common, grid, values, label: panel.x_label, size: 40, labelSize: 22 };
    if (panel.y_logarithmic) {
      y.splits = (u, axis, low, high) => logarithmicSplits(low, high);
      y.filter = (u, splits) => splits.map((value) => (isNumbered(value, u.scales.y) ? value : null));
    }
    if (panel.logarithmic) {
      x.splits = (u, axis, low, high) => logarithmicSplits(low, high);
      x.filter = (u, splits) => splits.map((value) => (isNumbered(value, u.scales.x) ? value : null));
    }
    return [x, y];
  }

  function readoutOf(panel, u) {
    if (!(u.cursor.left >= 0)) return "";
    const x = u.posToVal(u.cursor.left, "x"), y = u.posToVal(u.cursor.top, "y");
    const named = (name, value) => `${name}: ${format(value)}`, rounded = (value) => Number(value.toPrecision(4));
    const texts = [named(panel.x_label, rounded(x)), named(panel.y_label, rounded(y))];
    if (panel.image) texts.push(named(panel.image.label, imageValue(panel.image, x, y)));
    return texts.join(" · ");
  }

  function show(view) {
    view.plot.setScale("x", { min: view.group.x?.[0] ?? view.full.x[0], max: view.group.x?.[1] ?? view.full.x[1] });
  }

  // A drag selects a range of x, of y, or of both.
  function zoom(view) {
    const u = view.plot, { left, top, width, height } = u.select;
    if (width > 0 && width < u.over.clientWidth)
      view.group.x = [u.posToVal(left, "x"), u.posToVal(left + width, "x")];
    if (height > 0 && height < u.over.clientHeight) view.y = [u.posToVal(top + height, "y"), u.posToVal(top, "y")];
    u.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    view.group.views.forEach(show);
  }

  function reset(view) {
    view.group.x = null;
    for (const other of view.group.views) {
      other.y = null;
      show(other);
    }
  }

  function sizeOf(panel) {
    const width = Math.max(300, document.documentElement.clientWidth - 40);
    if (!panel.square) return { width, height: HEIGHT };
    const side = Math.min(width, 700);
    return { width: side, height: side - 48 }; // the axes take 122 pixels of the width and 74 of the height
  }

  function yRange(view, low, high) {
    if (view.y) return view.y;
    const { panel } = view;
    if (view.byHand || low == null) return [view.full.y[0], view.full.y[1]];
    const [from, to] = panel.y_logarithmic ? [low / 2, high * 4] : padded(low, high);
    if (view.group.x == null) return [panel.y[0] ?? from, panel.y[1] ?? to];
    return widened([Math.max(from, panel.y[0] ?? from), Math.min(to, panel.y[1] ?? to)]);
  }

  function groupOf(panel) {
    const key = JSON.stringify([panel.x_label, panel.logarithmic, panel.square]);
    if (!groups.has(key)) groups.set(key, { key, views: [], x: null });
    return groups.get(key);
  }

  function add(panel) {
    const group = groupOf(panel), points = panel.curves.map((curve) => pointsOf(curve, panel));
    const full = fullRanges(panel, points), { byHand, data, series } = dataOf(panel, points, full.x);
    const view = { panel, group, full, byHand, y: null };
    const bitmap = panel.image ? bitmapOf(panel.image) : null;
    const box = document.body.appendChild(document.createElement("div"));
    box.className = "panel";
    const readout = document.createElement("div");
    readout.className = "readout";
    const moves = (type) => type === "mousemove" || type === "mouseleave";
    view.plot = new uPlot(
      {
        ...sizeOf(panel), series, axes: axesOf(panel), title: figure.panels.length > 1 ? panel.title : "",
        padding: [12, RIGHT, 0, 0],
        legend: { show: !byHand, live: true },
        scales: {
          x: { time: false, distr: panel.logarithmic ? 3 : 1, range: () => [...(group.x ?? full.x)] },
          y: { distr: panel.y_logarithmic ? 3 : 1, range: (u, low, high) => yRange(view, low, high) },
        },
        cursor: {
          drag: { x: true, y: true, uni: 40, dist: 4, setScale: false },
          sync: { key: group.key, setSeries: false, scales: ["x", null], filters: { pub: moves, sub: moves } },
        },
        hooks: {
          drawClear: [
            (u) => bitmap && drawImage(u, panel.image, bitmap),
            (u) => inFrame(u, (ctx, frame) => drawBands(ctx, frame, panel)),
          ],
          draw: [
            (u) => {
              inFrame(u, (ctx, frame) => {
                if (byHand) drawCurves(ctx, frame, panel, points);
                drawMarks(ctx, frame, panel);
              });
              if (bitmap) drawBar(u, panel.image);
            },
          ],
          setSelect: [() => zoom(view)],
          setCursor: [(u) => byHand && (readout.textContent = readoutOf(panel, u))],
        },
      },
      data,
      box
    );
    box.style.width = view.plot.width + "px";
    if (byHand) box.appendChild(readout);
    view.plot.over.addEventListener("dblclick", () => reset(view));
    group.views.push(view);
    return view;
  }

  function fit(view) {
    const size = sizeOf(view.panel);
    view.plot.setSize(size);
    view.plot.root.parentElement.style.width = size.width + "px";
  }

  const views = figure.panels.map(add);
  document.body.appendChild(document.createElement("p")).textContent = "drag: zoom · double click: all";
  addEventListener("resize", () => views.forEach(fit));
  isDark.addEventListener("change", () => views.forEach((view) => view.plot.redraw()));
})();
