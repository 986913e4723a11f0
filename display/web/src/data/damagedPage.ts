/** The data of a page cannot be read; the message says what is wrong. */
export class DamagedPage extends Error {
  constructor(reason: string) {
    super(reason);
    this.name = 'DamagedPage';
  }
}
