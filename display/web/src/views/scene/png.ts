import type { SceneColours } from './sceneColours';
import type { Label } from './labels';

const FONT = '13px system-ui, "Segoe UI", Roboto, "Helvetica Neue", sans-serif';
const PADDING = 8;
const CORNER = 5;

/** The picture of canvases, one over the other, with labels on them, as a PNG. */
export function paintPng(
  canvases: readonly HTMLCanvasElement[],
  labels: readonly Label[],
  pixelRatio: number,
  colours: SceneColours,
): Promise<Blob> {
  const canvas = document.createElement('canvas');
  canvas.width = canvases[0]?.width ?? 0;
  canvas.height = canvases[0]?.height ?? 0;
  const pen = canvas.getContext('2d');
  if (pen) {
    for (const layer of canvases) pen.drawImage(layer, 0, 0);
    pen.scale(pixelRatio, pixelRatio);
    for (const label of labels) paintLabel(pen, label, colours);
  }
  return new Promise((resolve, reject) => {
    canvas.toBlob((blob) => {
      if (blob) resolve(blob);
      else reject(new Error('The picture cannot be written as PNG.'));
    }, 'image/png');
  });
}

function paintLabel(
  pen: CanvasRenderingContext2D,
  { box, text }: Label,
  colours: SceneColours,
): void {
  if (!box) return;
  pen.beginPath();
  pen.roundRect(box.left + 0.5, box.top + 0.5, box.width - 1, box.height - 1, CORNER);
  pen.fillStyle = colours.panel;
  pen.fill();
  pen.lineWidth = 1;
  pen.strokeStyle = colours.controlEdge;
  pen.stroke();
  pen.save();
  pen.clip();
  pen.font = `500 ${FONT}`;
  pen.textBaseline = 'middle';
  pen.fillStyle = colours.text;
  pen.fillText(text, box.left + PADDING, box.top + box.height / 2);
  pen.restore();
}
