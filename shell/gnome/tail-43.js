
class Extension {
  constructor(folder) {
    this._folder = folder;
  }

  enable() {
    this._link = new Link(this._folder);
  }

  disable() {
    this._link.destroy();
    this._link = null;
  }
}

function init(metadata) {
  return new Extension(metadata.path);
}
