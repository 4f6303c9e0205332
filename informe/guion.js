(function () {
'use strict';
// Zoom and hover over the drawn charts. Without this script, on paper and where it fails the drawings stand.
var dato = document.getElementById('datos');
if (!dato || typeof Dygraph === 'undefined') return;
var d = JSON.parse(dato.textContent), ids = Object.keys(d.canales), graficos = [], desde = d.desde * 1000, paso = d.dura / d.columnas * 1000;
// What all charts show, those that are still to be made too.
var rango = [desde, desde + d.dura * 1000];
var MESES = ['ene', 'feb', 'mar', 'abr', 'may', 'jun', 'jul', 'ago', 'sep', 'oct', 'nov', 'dic'];
var RUMBOS = ['N', 'NNE', 'NE', 'ENE', 'E', 'ESE', 'SE', 'SSE', 'S', 'SSO', 'SO', 'OSO', 'O', 'ONO', 'NO', 'NNO'];
function dos(n) { return (n < 10 ? '0' : '') + n; }
function momento(ms) { var f = new Date(ms); return dos(f.getUTCDate()) + '/' + dos(f.getUTCMonth() + 1) + '/' + f.getUTCFullYear() + ' ' + dos(f.getUTCHours()) + ':' + dos(f.getUTCMinutes()); }
function color(nombre, de) { return getComputedStyle(de || document.documentElement).getPropertyValue(nombre).trim(); }
function x(columna) { return new Date(desde + (columna + 0.5) * paso); }

// The library's handles are pictures, which this page does not let in: two small canvases do as well.
Dygraph.Plugins.RangeSelector.prototype.createZoomHandles_ = function () {
  var hacer = function () {
    var c = document.createElement('canvas'), t;
    c.width = 9; c.height = 16; c.className = 'dygraph-rangesel-zoomhandle';
    c.style.position = 'absolute'; c.style.zIndex = 10; c.style.visibility = 'hidden'; c.style.cursor = 'col-resize';
    t = c.getContext('2d'); t.fillStyle = '#8a94a3'; t.fillRect(1, 0, 7, 16); t.fillStyle = '#fff'; t.fillRect(3, 4, 1, 8); t.fillRect(5, 4, 1, 8);
    return c;
  };
  this.leftZoomHandle_ = hacer(); this.rightZoomHandle_ = hacer();
};

// Its legend writes styles into markup, which the page's policy refuses; what it would say stands below each chart.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter(function (p) { return p !== Dygraph.Plugins.Legend; });

function filas(c) {
  var e = Math.pow(10, c.d), lista = [], i, n, j, suma = 0;
  if (c.x) {
    var corte = 0;
    for (i = 0; i < c.x.length; i++) {
      var cortado = false;
      while (corte < c.c.length && c.c[corte] <= c.x[i]) { cortado = true; corte++; }
      if (cortado && i > 0) lista.push([new Date((x(c.x[i - 1]).getTime() + x(c.x[i]).getTime()) / 2), [NaN, NaN, NaN]]);
      lista.push([x(c.x[i]), [c.a[i] / e, c.m[i] / e, c.b[i] / e]]);
    }
  } else if (c.puntos) {
    if (c.dominantes) for (i = 0; i < c.dominantes.length; i += 2) lista.push([x(c.dominantes[i]), c.dominantes[i + 1] * 2.25]);
    else for (i = 0; i < c.puntos.length; i += 3) for (j = c.puntos[i + 1]; j <= c.puntos[i + 2]; j++) lista.push([x(c.puntos[i]), j * 2.25]);
  } else {
    for (i = 0, n = c.barras.length; i < n; i += 3) { suma += c.barras[i + 2]; lista.push([new Date(desde + (c.barras[i] + c.barras[i + 1]) * 500), c.barras[i + 2] / e, suma / e]); }
  }
  if (!lista.length) lista.push(c.x ? [x(0), [NaN, NaN, NaN]] : c.puntos ? [x(0), NaN] : [x(0), 0, 0]);
  return lista;
}

function dibujarMarcas(ctx, g, c) {
  var e = Math.pow(10, c.d), area = g.getArea();
  ctx.save(); ctx.beginPath(); ctx.rect(area.x - 4, area.y - 4, area.w + 8, area.h + 8); ctx.clip();
  // The worst last, over what else their samples are marked; where there are very many, small.
  ['fijo', 'salto', 'rango'].forEach(function (m) {
    var l = c[m] || [], i, p, y, k = l.length > 1000 ? 0.6 : 1;
    ctx.fillStyle = ctx.strokeStyle = color('--' + m);
    for (i = 0; i < l.length; i += 2) {
      p = g.toDomCoords(x(l[i]).getTime(), l[i + 1] / e);
      if (p[0] < area.x - 1 || p[0] > area.x + area.w + 1) continue;
      y = p[1] < area.y ? area.y + 4 : p[1] > area.y + area.h ? area.y + area.h - 4 : p[1];
      ctx.beginPath();
      if (m === 'rango') ctx.fillRect(p[0] - 3 * k, y - 3 * k, 6 * k, 6 * k);
      else if (m === 'salto') { ctx.lineWidth = 2 * k; ctx.arc(p[0], y, 3.5 * k, 0, 7); ctx.stroke(); }
      else { ctx.arc(p[0], y, 2.5 * k, 0, 7); ctx.fill(); }
    }
  });
  ctx.fillStyle = color('--rango');
  d.conflictos.forEach(function (i) { ctx.fillRect(g.toDomXCoord(x(i).getTime()) - 1, area.y, 2, 9); });
  ctx.restore();
}

// Stretches without samples, as the drawings shade them, and all directions of a long period.
function sombrear(ctx, area, g, c) {
  ctx.fillStyle = color('--vacio');
  for (var i = 0; i < d.vacios.length; i += 2) {
    var a = Math.max(area.x, g.toDomXCoord(desde + d.vacios[i] * paso)), b = Math.min(area.x + area.w, g.toDomXCoord(desde + d.vacios[i + 1] * paso));
    if (b > a) ctx.fillRect(a, area.y, b - a, area.h);
  }
  if (!c.dominantes) return;
  ctx.save(); ctx.globalAlpha = 0.22; ctx.fillStyle = color('--direccion');
  for (i = 0; i < c.puntos.length; i += 3) {
    a = g.toDomXCoord(x(c.puntos[i] - 0.5).getTime()); b = g.toDomXCoord(x(c.puntos[i] + 0.5).getTime());
    var arriba = g.toDomYCoord(c.puntos[i + 2] * 2.25), abajo = g.toDomYCoord(c.puntos[i + 1] * 2.25);
    if (b >= area.x && a <= area.x + area.w) ctx.fillRect(a, arriba - 1, b - a, abajo - arriba + 2);
  }
  ctx.restore();
}

function barras(c) {
  return function (p) {
    var ctx = p.drawingContext, g = p.dygraph, i, a, b, y0 = g.toDomYCoord(0), y;
    ctx.fillStyle = p.color;
    for (i = 0; i < c.barras.length; i += 3) {
      if (!c.barras[i + 2]) continue;
      a = g.toDomXCoord(desde + c.barras[i] * 1000); b = g.toDomXCoord(desde + c.barras[i + 1] * 1000); y = g.toDomYCoord(c.barras[i + 2] / Math.pow(10, c.d));
      ctx.fillRect(a + (b - a > 6 ? (b - a) / 8 : 0), y, Math.max(1, (b - a) * (b - a > 6 ? 0.75 : 1)), y0 - y);
    }
  };
}

function rotuloDeTiempo(f, grano, opciones) {
  var t = new Date(f.getTime ? f.getTime() : f), h = t.getUTCHours(), m = t.getUTCMinutes();
  if (h || m) return dos(h) + ':' + dos(m);
  if (rango[1] - rango[0] > 3 * 366 * 864e5) return String(t.getUTCFullYear());
  if (rango[1] - rango[0] > 120 * 864e5) return MESES[t.getUTCMonth()] + (t.getUTCMonth() ? '' : ' ' + t.getUTCFullYear());
  return t.getUTCDate() + ' ' + MESES[t.getUTCMonth()];
}

// Round values, at most six, as the drawings have them.
function marcasDe(decimales) {
  return function (a, b) {
    var unidad = Math.pow(10, -decimales), paso = unidad, i = 0, v, l = [];
    while ((b - a) / paso > 5.5) paso = unidad * [1, 2, 5][++i % 3] * Math.pow(10, Math.floor(i / 3));
    for (v = Math.ceil(a / paso - 1e-9); v * paso <= b + 1e-9 * paso; v++) l.push({ v: v * paso, label: (v * paso).toFixed(paso < 1 ? Math.min(decimales, Math.ceil(-Math.log10(paso) - 1e-9)) : 0) });
    return l;
  };
}

function leer(id, c, i, lugar) {
  var e = Math.pow(10, c.d), texto = '', f = c.filas[i];
  if (!f) return;
  texto = momento(f[0].getTime()) + ': ';
  if (c.x) texto += 'mínimo ' + f[1][0].toFixed(c.d) + ', media ' + f[1][1].toFixed(c.d) + ', máximo ' + f[1][2].toFixed(c.d);
  else if (c.puntos) texto += (c.dominantes ? 'sobre todo ' : '') + RUMBOS[Math.ceil(f[1] / 22.5 - 0.5) % 16] + (c.dominantes ? '' : ' (' + Math.round(f[1]) + 'º)');
  else texto += f[1].toFixed(c.d) + ', total ' + f[2].toFixed(c.d);
  lugar.textContent = texto;
}

var ajustando = false;
function ajustarTodos(nuevo) {
  if (ajustando) return;
  ajustando = true;
  rango = nuevo.slice();
  graficos.forEach(function (o) { var r = o.g.xAxisRange(); if (r[0] !== rango[0] || r[1] !== rango[1]) o.g.updateOptions({ dateWindow: rango.slice() }); });
  topes.forEach(mostrarTope);
  ajustando = false;
}

function lienzoDe(id) { return document.querySelector('[data-canal="' + id + '"]'); }

function crear(id) {
  var c = d.canales[id], lienzo = lienzoDe(id), fila = lienzo.parentNode, ultimo = id === ids[ids.length - 1];
  var div = document.createElement('div'), lectura = document.createElement('p');
  div.className = 'dy'; lectura.className = 'lectura'; lectura.setAttribute('aria-live', 'off');
  div.setAttribute('role', 'img'); div.setAttribute('aria-label', lienzo.querySelector('svg').getAttribute('aria-label'));
  div.style.height = ultimo ? '238px' : '186px';
  lienzo.classList.add('vivo'); lienzo.appendChild(div); lienzo.parentNode.insertBefore(lectura, lienzo.nextSibling);
  c.filas = filas(c);
  // Rows with and without a scale on the right lie one under the other, where there is room.
  var estrecha = window.matchMedia('(max-width: 640px)').matches;
  var tinta = color('--tinta'), propio = color('--c', fila), suave = color('--suave');
  var o = {
    labels: c.barras ? ['t', 'barras', 'total'] : ['t', 'valor'], labelsUTC: true, legend: 'never', animatedZooms: false, customBars: !!c.x,
    colors: c.barras ? [propio, tinta] : [propio], fillAlpha: 0.28, strokeWidth: 1.5, gridLineColor: color('--raya'), axisLineColor: color('--raya'), axisLabelFontSize: 12, xAxisHeight: 24, pointSize: 2, highlightCircleSize: 3,
    dateWindow: rango.slice(), xRangePad: 0, rightGap: c.barras ? 0 : estrecha ? 10 : 42,
    axes: { x: { axisLabelFormatter: rotuloDeTiempo, axisLabelWidth: 56, pixelsPerLabel: estrecha ? 46 : 58 }, y: { axisLabelWidth: 36, ticker: marcasDe(c.d) }, y2: { axisLabelWidth: 36, drawGrid: false, independentTicks: true, ticker: marcasDe(c.d) } },
    underlayCallback: function (ctx, area, g) { sombrear(ctx, area, g, c); },
    zoomCallback: function (a, b) { ajustarTodos([a, b]); },
    drawCallback: function (g, primera) { if (!primera) ajustarTodos(g.xAxisRange()); },
    highlightCallback: function (ev, fecha, puntos, i) { leer(id, c, i, lectura); },
    unhighlightCallback: function () { lectura.textContent = ''; },
    plugins: [{ activate: function () { return { didDrawChart: function (ev) { dibujarMarcas(ev.drawingContext, ev.dygraph, c); } }; }, toString: function () { return 'marcas'; }, destroy: function () {} }]
  };
  if (c.puntos) { o.drawPoints = true; o.strokeWidth = 0; o.pointSize = 1.4; o.valueRange = [-5, 365]; o.axes.y.ticker = function () { return [0, 90, 180, 270, 360].map(function (v) { return { v: v, label: 'NESON'[v / 90] }; }); }; }
  // What never moves runs through the middle, as in the drawings.
  if (id === 'viento' || id === 'radiacion') o.includeZero = true;
  else if (c.x && c.x.length) { var bajo = Math.min.apply(null, c.a), alto = Math.max.apply(null, c.b); if (bajo === alto && bajo) o.valueRange = [(bajo - 1) / Math.pow(10, c.d), (bajo + 1) / Math.pow(10, c.d)]; }
  if (c.barras) { o.series = { barras: { plotter: barras(c) }, total: { axis: 'y2', strokeWidth: 1.4 } }; o.includeZero = true; }
  if (ultimo) { o.showRangeSelector = true; o.rangeSelectorHeight = 44; o.rangeSelectorPlotStrokeColor = suave; o.rangeSelectorPlotFillColor = o.rangeSelectorPlotFillGradientColor = color('--vacio'); o.rangeSelectorForegroundStrokeColor = suave; o.rangeSelectorBackgroundStrokeColor = suave; o.rangeSelectorAlpha = 0.75; }
  try {
    graficos.push({ g: new Dygraph(div, c.filas, o), id: id, div: div });
  } catch (e) {
    lienzo.classList.remove('vivo');
    throw e;
  }
}

function mover(escala, corre) {
  var r = rango, fin = desde + d.dura * 1000, ancho = Math.min((r[1] - r[0]) * escala, fin - desde), a = (r[0] + r[1] - ancho) / 2 + corre * ancho;
  ancho = Math.max(ancho, Math.min(6 * paso, fin - desde));
  a = Math.max(desde, Math.min(fin - ancho, a));
  ajustarTodos([a, a + ancho]);
  decirRango();
}

// What the handles below the last chart do with the mouse, each for itself: where the charts begin and end.
var topes = [];
function mostrarTope(tope, cual) {
  tope.value = Math.round((rango[cual] - desde) / paso);
  tope.setAttribute('aria-valuetext', momento(rango[cual]));
}
function crearTope(nombre, cual) {
  var rotulo = document.createElement('label'), tope = document.createElement('input');
  tope.type = 'range'; tope.min = 0; tope.max = d.columnas; tope.step = 1;
  tope.addEventListener('input', function () {
    var nuevo = rango.slice(), hueco = Math.min(6, d.columnas), v = +tope.value;
    v = cual ? Math.max(v, hueco) : Math.min(v, d.columnas - hueco);
    nuevo[cual] = desde + v * paso;
    // It pushes the other one before it.
    if (cual) nuevo[0] = Math.min(nuevo[0], nuevo[1] - hueco * paso); else nuevo[1] = Math.max(nuevo[1], nuevo[0] + hueco * paso);
    ajustarTodos(nuevo);
    decirRango();
  });
  rotulo.appendChild(document.createTextNode(nombre)); rotulo.appendChild(tope);
  topes.push(tope);
  mostrarTope(tope, cual);
  return rotulo;
}
function decirRango() { aviso.textContent = momento(rango[0]) + ' a ' + momento(rango[1]); }

var aviso = document.createElement('span');
function mandos() {
  var lugar = document.getElementById('mandos');
  lugar.setAttribute('role', 'group'); lugar.setAttribute('aria-label', 'Acercar y mover los gráficos');
  [['Acercar', 0.5, 0], ['Alejar', 2, 0], ['Antes', 1, -0.5], ['Después', 1, 0.5], ['Todo', 1e9, 0]].forEach(function (m) {
    var b = document.createElement('button');
    b.type = 'button'; b.textContent = m[0];
    b.addEventListener('click', function () { mover(m[1], m[2]); });
    lugar.appendChild(b);
  });
  lugar.appendChild(crearTope('Desde', 0)); lugar.appendChild(crearTope('Hasta', 1));
  aviso.setAttribute('role', 'status'); aviso.className = 'lectura'; lugar.appendChild(aviso);
}

// Each is made when it comes near: a page whose drawings nobody has scrolled to yet opens at once.
function alAcercarse() {
  if (typeof IntersectionObserver === 'undefined') { ids.forEach(crear); return; }
  var vigia = new IntersectionObserver(function (entradas) {
    entradas.forEach(function (e) {
      if (!e.isIntersecting) return;
      vigia.unobserve(e.target);
      crear(e.target.getAttribute('data-canal'));
    });
  }, { rootMargin: '300px' });
  ids.forEach(function (id) { vigia.observe(lienzoDe(id)); });
}
function recolorear() {
  var hechos = graficos.map(function (o) { return o.id; });
  graficos.forEach(function (o) { o.g.destroy(); var p = o.div.parentNode.nextSibling; p.parentNode.removeChild(p); o.div.parentNode.removeChild(o.div); });
  graficos = [];
  hechos.forEach(crear);
}
mandos();
alAcercarse();
window.matchMedia('(prefers-color-scheme: dark)').addEventListener('change', recolorear);
})();
