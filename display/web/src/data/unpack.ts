import { DamagedPage } from './damagedPage';

/** Characters of base64 that are decoded at once: a multiple of 4. */
const PIECE = 1 << 20;

/**
 * The bytes in base64 of zlib's deflate.
 *
 * @param name    of the block, for messages
 * @param length  number of bytes expected
 * @throws DamagedPage unless the text is exactly this
 */
export async function unpack(
  name: string,
  text: string,
  length: number,
): Promise<Uint8Array<ArrayBuffer>> {
  const base64 = text.replace(/\s+/g, '');
  const bytes = new Uint8Array(length);
  let filled = 0;
  const reader = decodePieces(name, base64)
    .pipeThrough(new DecompressionStream('deflate'))
    .getReader();
  try {
    for (;;) {
      const { done, value } = await reader.read();
      if (done) break;
      // Text that never ends must not fill the memory.
      if (value.length > length - filled) {
        throw new DamagedPage(`${name} is too long: not ${length} bytes`);
      }
      bytes.set(value, filled);
      filled += value.length;
    }
  } catch (error) {
    // Closes what is still open; its own failure would say no more.
    reader.cancel().catch(() => undefined);
    throw error instanceof DamagedPage ? error : cannotUnpack(name);
  }
  if (filled !== length) {
    throw new DamagedPage(`${name} is cut: ${filled} of ${length} bytes`);
  }
  return bytes;
}

function cannotUnpack(name: string): DamagedPage {
  return new DamagedPage(`${name} cannot be unpacked`);
}

function decodePieces(
  name: string,
  base64: string,
): ReadableStream<Uint8Array<ArrayBuffer>> {
  let start = 0;
  return new ReadableStream({
    pull(controller) {
      if (start >= base64.length) {
        controller.close();
        return;
      }
      const bytes = decodeBase64(base64.slice(start, start + PIECE));
      start += PIECE;
      if (bytes) controller.enqueue(bytes);
      else controller.error(cannotUnpack(name));
    },
  });
}

/** The bytes; null if the text is not base64. */
function decodeBase64(base64: string): Uint8Array<ArrayBuffer> | null {
  try {
    const binary = atob(base64);
    const bytes = new Uint8Array(binary.length);
    for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
    return bytes;
  } catch {
    return null;
  }
}
