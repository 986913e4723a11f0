/** What a name of a file may not hold somewhere, and what would hide it. */
const UNSAFE = /[^\p{L}\p{N}=,._ -]+|^\.+/gu;
const LONGEST_NAME = 80;

/** Offer a picture for saving, named after what it shows. */
export function offerPicture(picture: Blob, what: string): void {
  const name = what.replace(UNSAFE, '_').slice(0, LONGEST_NAME);
  const link = document.createElement('a');
  link.href = URL.createObjectURL(picture);
  link.download = `shadows-${name}.png`;
  link.click();
  URL.revokeObjectURL(link.href);
}

/** Paint canvases, one over the other, on the ground of the view. */
export function paintCanvases(
  canvases: readonly HTMLCanvasElement[],
  ground: string,
): Promise<Blob | null> {
  const [first] = canvases;
  const paper = document.createElement('canvas');
  paper.width = first?.width ?? 0;
  paper.height = first?.height ?? 0;
  const pen = paper.getContext('2d');
  if (pen !== null) {
    pen.fillStyle = ground;
    pen.fillRect(0, 0, paper.width, paper.height);
    for (const canvas of canvases) pen.drawImage(canvas, 0, 0);
  }
  return new Promise((resolve) => {
    paper.toBlob(resolve, 'image/png');
  });
}
