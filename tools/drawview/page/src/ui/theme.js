// Light and dark: as the system asks, until the user chooses; the choice is kept where pages may.

const key = 'drawview.theme';
const system = matchMedia('(prefers-color-scheme: dark)');

function stored() {
  try {
    return localStorage.getItem(key);
  } catch {
    return null;
  }
}

function store(theme) {
  try {
    localStorage.setItem(key, theme);
  } catch {
    // A page without storage forgets the choice.
  }
}

/** @param {import('../app.js').App} app @returns {() => void} switches between light and dark */
export function attachTheme(app) {
  let chosen = stored();
  const apply = () => {
    const theme = chosen ?? (system.matches ? 'dark' : 'light');
    document.documentElement.dataset.theme = theme;
    app.setTheme(theme);
  };
  system.addEventListener('change', apply);
  apply();
  return () => {
    chosen = app.theme === 'dark' ? 'light' : 'dark';
    store(chosen);
    apply();
  };
}
