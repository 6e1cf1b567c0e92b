// A relay between the page and the program, which can hold messages back from the page.

/** Relays messages to the page; `last` holds the latest of each kind. */
export class Relay {
  passes = true;
  last = {};
  #page;

  /** The `prepare` argument of LivePage.open. */
  prepare = (page) => page.routeWebSocket('**/live', (socket) => {
    this.#page = socket;
    socket.connectToServer().onMessage((text) => {
      const message = JSON.parse(text);
      if (!this.passes) return;
      this.last[message.op] = message;
      socket.send(text);
    });
  });

  /** Tells the page something that the program did not say. */
  tell(message) {
    this.#page.send(JSON.stringify(message));
  }
}
