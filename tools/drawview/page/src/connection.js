// The WebSocket to the program that serves the page. It tells of frames and senders; the page sends
// nothing. A lost connection is tried again.

const firstDelay = 300;
const longestDelay = 4000;

/**
 * @param {{onMessage: (message: object) => void, onOpen: () => void, onClose: () => void}} events
 */
export function connect(events) {
  let delay = firstDelay;
  const open = () => {
    const address = new URL('socket', location.href);
    address.protocol = address.protocol.replace('http', 'ws');
    const socket = new WebSocket(address);
    socket.onopen = () => {
      delay = firstDelay;
      events.onOpen();
    };
    socket.onmessage = ({ data }) => {
      let message;
      try {
        message = JSON.parse(data);
      } catch {
        return;
      }
      events.onMessage(message);
    };
    socket.onclose = () => {
      events.onClose();
      setTimeout(open, delay);
      delay = Math.min(2 * delay, longestDelay);
    };
  };
  open();
}
