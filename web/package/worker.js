// The worker of browser.js.
import { engine } from "./local.js";
import { serve } from "./messages.js";

serve(
  engine,
  (handle) => (onmessage = ({ data }) => handle(data)),
  (message, buffers) => postMessage(message, buffers),
);
