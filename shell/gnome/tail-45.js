
export default class TollvaneExtension extends Extension {
  enable() {
    this._link = new Link(this.path);
  }

  disable() {
    this._link.destroy();
    this._link = null;
  }
}
