// Tells that the program was restarted, so that all subscriptions, faults and goals are lost.

import { byId, setHidden, setText } from './dom.js';

export class RestartNotice {
  #run = '';

  constructor() {
    byId('restarted-close').addEventListener('click', () => {
      setHidden(byId('restarted'), true);
      byId('map').focus();
    });
  }

  /** `wanted` are the sensors that this page asks for again. */
  setWorld({ run }, wanted) {
    const isOther = this.#run !== '' && run !== this.#run;
    this.#run = run;
    if (!isOther) return;
    const again = wanted.length > 0 ? `This page has subscribed to ${wanted.join(', ')} again.` : 'This page had no subscriptions.';
    setText(byId('restarted-text'), `The program was restarted. All earlier subscriptions, faults and goals are gone. ${again}`);
    setHidden(byId('restarted'), false);
  }
}
